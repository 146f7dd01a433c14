#include "explorer/installed_catalogues.h"

#include <filesystem>

namespace fs = std::filesystem;

// An installation that was moved as a whole keeps its catalogues.
std::string installedCatalogues() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    for (const fs::path& folder :
         {(program.parent_path() / CATALOGUES_FROM_PROGRAM).lexically_normal(),
          fs::path(CATALOGUES)}) {
        if (fs::is_directory(folder, error)) return folder;
    }
    return {};
}
