#include "tests/backends/opencl/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace child {
namespace {

namespace fs = std::filesystem;

// The folder of the test that is running, for its scratch files.
fs::path testFolder() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "outside_a_test";
    if (test) name = std::string(test->test_suite_name()) + "." + test->name();
    for (char& letter : name) {
        if (letter == '/') letter = '_';
    }
    const fs::path folder = fs::path(TESSARY_OPENCL_SCRATCH) / name;
    fs::create_directories(folder);
    return folder;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void redirect(int descriptor, const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file < 0 || dup2(file, descriptor) < 0) _exit(125);
    close(file);
}

[[noreturn]] void becomeDriver(std::vector<std::string> words, const std::string& out,
                               const std::string& err) {
    redirect(STDOUT_FILENO, out);
    redirect(STDERR_FILENO, err);
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(126);
}

// Every test, and the drivers it runs, sees one known runtime with one device. Compiled programs
// are kept in the build folder for all of them: they are a few texts, compiled again and again.
class KnownRuntime : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override {
        setenv("OCL_ICD_VENDORS", "/etc/OpenCL/vendors/pocl.icd", 1);
        setenv("POCL_DEVICES", "pthread", 1);
        setenv("POCL_CACHE_DIR", TESSARY_OPENCL_SCRATCH "/pocl_cache", 1);
    }
};

[[maybe_unused]] const bool listening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new KnownRuntime);
    return true;
}();

}  // namespace

std::string scratchFile(const std::string& name) {
    return (testFolder() / name).string();
}

Result run(const std::string& commands, const Environment& environment) {
    std::vector<std::string> words = {TESSARY_OPENCL_DRIVER};
    std::istringstream stream(commands);
    for (std::string word; stream >> word;) words.push_back(word);
    const std::string out = scratchFile("stdout"), err = scratchFile("stderr");
    const std::string log = scratchFile("calls");
    std::filesystem::remove(log);

    const pid_t process = fork();
    if (process == 0) {
        setenv("TESSARY_LAYER_LOG", log.c_str(), 1);
        for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
        becomeDriver(words, out, err);
    }
    Result result;
    int status = 0;
    if (process > 0 && waitpid(process, &status, 0) == process) {
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    result.out = readFile(out);
    result.err = readFile(err);
    result.callLog = readFile(log);
    return result;
}

Environment layer(const std::string& settings) {
    return {{"OPENCL_LAYERS", TESSARY_OPENCL_LAYER}, {"TESSARY_LAYER", settings}};
}

std::vector<std::string> lines(const std::string& text) {
    return linesThatStart(text, "");
}

std::vector<std::string> linesThatStart(const std::string& text, const std::string& start) {
    std::vector<std::string> found;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind(start, 0) == 0) found.push_back(line);
    }
    return found;
}

}  // namespace child
