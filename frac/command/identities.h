// The identities of entries from several files.
#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "frac/fractal.h"

// Gives the entries of each file identities that no file before it has: cycling glides between
// entries that share one. One thread.
class Identities {
  public:
    // Entries of one file that share an identity share one afterwards. One that no file before has
    // stays as it is, another becomes the smallest that is free, from 0.
    void keepApart(std::vector<fractal>& entries);

  private:
    std::int32_t takeFree();

    std::set<std::int32_t> taken;
    std::int32_t lowest = 0;  // none below it is free
};
