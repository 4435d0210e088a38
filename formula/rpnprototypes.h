#pragma once
// The node classes of the language core join the keyword table: one
// prototype of each class, indexed by class number.  The first equation tree
// calls this; later calls do nothing.

void RegisterLanguageCore();
