#pragma once
// The one question tarn-calc asks of the operating system.

// True when standard input is an interactive terminal (not a pipe or a file).
bool StandardInputIsTerminal();
