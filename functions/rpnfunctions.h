#pragma once
// The built-in functions of the formula language join the keyword table.
//
// Every program that compiles formulas calls RegisterFunctionLibrary once,
// before it compiles (or, at the latest, before other threads compile): it
// adds one prototype provider per family of functions.  Later calls do
// nothing.  How a new function is written and joins: rpnfunctionbase.h.

void RegisterFunctionLibrary();
