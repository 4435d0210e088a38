# Nothing: the interpreter starting and ending.
