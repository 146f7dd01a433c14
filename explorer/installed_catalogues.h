// The catalogues that come with the program.
#pragma once

#include <string>

// The folder that they are installed in, found from where the program lies or, failing that, where
// it was built to be installed; empty where there is no such folder. Any thread.
std::string installedCatalogues();
