#pragma once
// The questions tarn-calc asks of the operating system.

// True when standard input is an interactive terminal (not a pipe or a file).
bool StandardInputIsTerminal();
// True when standard output is one.
bool StandardOutputIsTerminal();
