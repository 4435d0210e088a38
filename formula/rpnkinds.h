#pragma once
// Kind numbers and flag bits of formula values.  The kind numbers are written
// into saved trees and values, so they never change.

#include <cstdint>

enum RpnKind : std::uint32_t {
    RPN_NULL = 0,
    RPN_REAL = 1,
    RPN_INT = 3,
    RPN_STRING = 9,
    RPN_POINTER = 10,    // foreign pointer, never freed here
    RPN_DOCUMENT = 11,   // owned object with a virtual destructor
    RPN_TARNPART = 13,   // foreign part object, always borrowed
    RPN_DICTIONARY = 14, // owned CMapStringToRpnData
    RPN_ARRAY_R = 17,    // owned block of doubles
    RPN_ARRAY = 31,      // owned block of values
    RPN_FORMULA = 32,    // owned CEquationTree
    RPN_FUNCTION = 33,   // borrowed user function record
    RPN_COMPLEX = 48,
    RPN_CURVE = 64,      // curve reference of a graph
    RPN_TABLE = 128,     // table record of ReadTable
    RPN_XML = 256,       // counted XML element
    RPN_LOOKUP_TABLE = 512, // owned table object that a host gives to Lookup_table
};

// Payload flags.
inline constexpr std::uint32_t RPN_FLAG_EXPONENT_MASK = 0xFF;
inline constexpr std::uint32_t RPN_FLAG_MATRIX = 0x10000;
inline constexpr std::uint32_t RPN_FLAG_BORROWED = 0x1000000;

// Flags of CRpnData::GetText.  Bits 0-7 are the precision (significant
// digits); 0 and values of 32 and more mean 16.
inline constexpr std::uint32_t RPN_TEXT_PRECISION_MASK = 0xFF;
inline constexpr std::uint32_t RPN_TEXT_QUOTES = 1u << 20;   // STRING between double quotes
inline constexpr std::uint32_t RPN_TEXT_ELLIPSIS = 1u << 21; // show a cut list with an ellipsis
inline constexpr std::uint32_t RPN_TEXT_BRACES = 1u << 22;   // always braces round ARRAY and DICTIONARY
inline constexpr std::uint32_t RPN_TEXT_CUT = 1u << 25;      // cut lists of 101 and more after 100
