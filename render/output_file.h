// Files that appear under their names only when they are whole.
#pragma once

#include <string>
#include <string_view>

namespace render {

// A file in the making. Its bytes go where nobody looks for them, into a file without a name where
// the file system has such, or else into one beside its place whose name begins with
// UNFINISHED_PREFIX; publish() puts it in its place, over a file that was there, whose permissions
// it takes on. Without publish() nothing remains. A symbolic link stays and what it points to is
// replaced. What is no regular file (a pipe, a device) is written as it comes, and so is standard
// output, which "-" names. One thread. Everything that fails is a Failure that names the file.
class OutputFile {
  public:
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    void publish();

  private:
    void openBeside();
    bool openNameless();
    void openNamed();
    void giveName();
    [[noreturn]] void fail(const char* deed, int error) const;

    std::string name;       // as messages say it
    std::string target;     // where it will be; empty when it is written as it comes
    std::string temporary;  // its name until then; empty while it has none
    int file = -1;
    bool owned = false;  // whether to close it
};

inline constexpr std::string_view UNFINISHED_PREFIX = ".tessary-render-";

// Removes from a folder the unfinished files of runs that are no more. Those of runs at work, which
// hold a lock on them, stay; what cannot be removed stays too. folder: "" for the current one.
void removeLeftovers(const std::string& folder);

// The folder of a path; "" for the current one.
std::string folderOf(const std::string& path);

}  // namespace render
