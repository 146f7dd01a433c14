#include "app/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <iostream>

void openClosedStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free descriptor is the one that is given out.
        if (fcntl(stream, F_GETFD) == -1) open("/dev/null", O_RDWR);
    }
}

void tellOfLostOutput() {
    if (!std::cout.flush()) std::cerr << "Standard output could not be written" << std::endl;
}
