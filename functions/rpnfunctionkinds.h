#pragma once
// Class numbers of the function nodes.  Saved trees name node classes by
// these numbers, so a number, once given, never changes.  pow, mod and pwr
// (39, 40, 42) are operators of the language core.

enum RpnFunctionKind : int {
    RPN_NODE_SQRT = 37,
    RPN_NODE_SQR = 41,
    RPN_NODE_HYPOT = 43,
    RPN_NODE_MIN = 44,
    RPN_NODE_MAX = 45,
    RPN_NODE_SUM = 46,
    RPN_NODE_EXP = 47,
    RPN_NODE_LOG = 48,
    RPN_NODE_LOG10 = 49,
    RPN_NODE_ABS = 50,
    RPN_NODE_SIGN = 51,
    RPN_NODE_CEIL = 52,
    RPN_NODE_FLOOR = 53,
    RPN_NODE_REAL = 71,
    RPN_NODE_IMAG = 72,
    RPN_NODE_ANGLE = 74,
    RPN_NODE_COMPLEX = 75,
    RPN_NODE_POLAR = 76,
    RPN_NODE_SIN = 250,
    RPN_NODE_COS = 251,
    RPN_NODE_TAN = 252,
    RPN_NODE_ASIN = 253,
    RPN_NODE_ACOS = 254,
    RPN_NODE_ATAN = 255,
    RPN_NODE_ATAN2 = 256,
    RPN_NODE_SINH = 257,
    RPN_NODE_COSH = 258,
    RPN_NODE_TANH = 259,
    RPN_NODE_SIND = 260,
    RPN_NODE_COSD = 261,
    RPN_NODE_TAND = 262,
    RPN_NODE_ASIND = 263,
    RPN_NODE_ACOSD = 264,
    RPN_NODE_ATAND = 265,
    RPN_NODE_ATAN2D = 266,
    RPN_NODE_AVG = 312,
    RPN_NODE_AVGX = 313,
    RPN_NODE_INTEGRAL = 314,
    RPN_NODE_HIPASS = 315,

    // Conversions between texts and values.
    RPN_NODE_TO_VALUE = 121,
    RPN_NODE_TO_STRING = 122,
    RPN_NODE_TO_STRING2 = 130,

    // Arrays.
    RPN_NODE_NEW_ARRAY = 123,
    RPN_NODE_NEW_LOG_ARRAY = 124,
    RPN_NODE_NEW_ARRAY_DOUBLE = 125,
    RPN_NODE_SIZE_OF = 126,
    RPN_NODE_ADD_TO_ARRAY = 127,
    RPN_NODE_COPY = 128,
    RPN_NODE_APPEND_ARRAY = 129,
    RPN_NODE_REMOVE_CELL = 131,
    RPN_NODE_FIND_NEXT = 171,

    // Texts.
    RPN_NODE_REPLACE = 160,
    RPN_NODE_SPLIT = 161,
    RPN_NODE_SPLIT2 = 162,
    RPN_NODE_FIND = 163,
    RPN_NODE_FIND_REVERSE = 164,
    RPN_NODE_SUBSTR = 165,
    RPN_NODE_TRIM = 166,
    RPN_NODE_TRIM_LEFT = 167,
    RPN_NODE_TRIM_RIGHT = 168,
    RPN_NODE_MAKE_UPPER = 169,
    RPN_NODE_MAKE_LOWER = 170,

    // Dictionaries.
    RPN_NODE_NEW_DICTIONARY = 220,
    RPN_NODE_DICT_SET = 221,
    RPN_NODE_DICT_GET = 222,
    RPN_NODE_DICT_TO_ARRAY = 223,

    // Tables.
    RPN_NODE_GRAPH2D = 381,
    RPN_NODE_GRAPH3D = 382,
    RPN_NODE_LOOKUP_TABLE = 383,
    RPN_NODE_GRAPH4D = 384,
    RPN_NODE_READ_TABLE = 481,
    RPN_NODE_GET_TABLE_VALUE = 482,
};
