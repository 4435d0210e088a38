// Neither Qt nor the C++ library can tell a terminal from a pipe; this file
// asks the operating system.

#include "terminal.h"

#if defined(_WIN32)
#include <io.h>
#include <stdio.h>

bool StandardInputIsTerminal()
{
    return _isatty(_fileno(stdin)) != 0;
}

bool StandardOutputIsTerminal()
{
    return _isatty(_fileno(stdout)) != 0;
}
#else
#include <stdio.h>
#include <unistd.h>

bool StandardInputIsTerminal()
{
    return isatty(fileno(stdin)) != 0;
}

bool StandardOutputIsTerminal()
{
    return isatty(fileno(stdout)) != 0;
}
#endif
