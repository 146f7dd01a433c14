// What a file has besides its content: owner, mode, access list, extended attributes.
#pragma once

#include "frac/file_descriptor.h"

// Gives the open file `to` all that the open file `from` has; 0 when it has it all now. ENOSPC and
// EDQUOT say that there was no room, every other error that something cannot be kept. To be called
// once `to` is written, since writing takes mode bits away. Any thread.
//
// Left out are the attributes that vouch for the content (security.capability, .ima, .evm): writing
// over the old file would end them, too.
FileError keepAttributes(int from, int to);
