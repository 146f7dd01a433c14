#include <exception>
#include <new>

#include "frac/command/command_line.h"
#include "frac/command/options.h"
#include "frac/command/output.h"

int main(int argc, char** argv) {
    prepareStreams();
    try {
        const Options options = readCommandLine(argc, argv);
        options.action(options);
        return 0;
    } catch (const CommandLineEnd& end) {
        return end.status;
    } catch (const Mistake& mistake) {
        say(mistake.what());
        return 2;
    } catch (const std::bad_alloc&) {
        say("out of memory");
    } catch (const std::exception& error) {
        say(error.what());
    }
    return 1;
}
