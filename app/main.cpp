#include "app/signals.h"
#include "app/start_up.h"

int main(int argc, char** argv) {
    openClosedStandardStreams();
    endQuietlyOnClosedPipe();
    const int status = runTessary(argc, argv);
    endBySignal();
    return status;
}
