#pragma once

// The exit status of every qx5820 command; the README lists them for scripts.
enum ExitCode : int {
    kExitOk = 0,
    kExitFound = 1,          // a check found something: a wiring finding, a flaw in a file
    kExitBadArguments = 2,   // an unknown option, a missing or malformed value
    kExitPortUnusable = 3,   // the port could not be opened (absent, busy, refused connection)
    kExitNoAnswer = 4,       // the meter did not answer, or the line was lost on the way
    kExitRefused = 5,        // a value the checks refused, a write the meter refused or did not confirm
    kExitFileError = 6,      // an output file could not be written
    kExitInterrupted = 130,  // stopped by Ctrl-C or SIGTERM before the work was done
};
