#include "explorer/frac_file.h"

#include <GL/glut.h>

#include <iostream>
#include <new>
#include <optional>
#include <vector>

#include "backends/view_state.h"
#include "explorer/catalogue.h"
#include "explorer/navigation.h"
#include "explorer/printed_name.h"
#include "frac/catalogue_bytes.h"
#include "frac/file_replace.h"

std::string filename = "Fractal1.frac";

namespace {

void replaceCatalogue(std::vector<fractal>&& loaded) {
    const std::lock_guard lock(mutex);
    fractals = std::move(loaded);
    currentFractal = 0;
    if (!fractals.empty()) setCurrentFractal(fractals.front());
    std::cout << "Loaded  " << fractals.size() << " fractals." << std::endl;
    glutPostRedisplay();
}

// Whether a dialog closed with this button has been confirmed; empty means by the Return key.
bool isConfirmed(const std::string& button) {
    return button.empty() || button == "OK";
}

void takeFilename(const std::string& text, void* user) {
    if (user != nullptr) std::cout << static_cast<const char*>(user) << std::endl;
    filename = text;
    std::cout << "Filename is " << printedName(filename) << std::endl;
}

// Memory that is not there is a file that cannot be written.
Replacement saveCatalogue(const std::string& path) {
    try {
        return replaceFile(path, encodeCatalogue(fractals));
    } catch (const std::bad_alloc&) {
        return {.done = false, .error = {}, .safeCopy = {}};
    }
}

// Nothing when the file cannot be read, or there is no memory for what is in it. Each line follows
// the entry it tells of.
std::optional<std::vector<fractal>> loadCatalogue(const std::string& path) {
    const auto tell = [](const fractal&) { std::cout << "Loaded fractal" << std::endl; };
    try {
        return readCatalogue(path, tell);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace

// The lines follow the write, so that none of them tells of an entry that is not on disk.
void SaveData(std::string path) {
    const std::lock_guard lock(mutex);
    const Replacement saved = saveCatalogue(path);
    if (!saved) {
        std::cout << "Could not write to disk" << std::endl;
        if (!saved.safeCopy.empty()) {
            std::cout << "What was in the file before is kept in " << printedName(saved.safeCopy)
                      << std::endl;
        }
        return;
    }
    for (std::size_t i = 0; i < fractals.size(); ++i) {
        std::cout << "Saved fractal " << i << std::endl;
    }
}

void LoadData(std::string path) {
    std::optional<std::vector<fractal>> loaded = loadCatalogue(path);
    if (!loaded) {
        std::cout << "Could not read from disk" << std::endl;
        return;
    }
    const bool newView = !loaded->empty();
    replaceCatalogue(std::move(*loaded));
    if (newView) addUpdate();
}

bool keyboard_input_save(std::string button, std::string text, void* user) {
    if (!isConfirmed(button)) return true;
    takeFilename(text, user);
    SaveData(filename);
    image_refreshed = false;
    return true;
}

bool keyboard_input_load(std::string button, std::string text, void* user) {
    if (!isConfirmed(button)) return true;
    takeFilename(text, user);
    LoadData(filename);
    addUpdate();
    return true;
}
