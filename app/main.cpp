#include <cstdlib>

#include "app/signals.h"
#include "app/standard_streams.h"
#include "app/start_up.h"

int main(int argc, char** argv) {
    openClosedStandardStreams();
    endQuietlyOnClosedPipe();
    std::atexit(tellOfLostOutput);
    const int status = runTessary(argc, argv);
    endBySignal();
    return status;
}
