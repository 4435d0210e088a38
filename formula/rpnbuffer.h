#pragma once
// CRpnBuffer: the byte buffer that saved values and compiled trees go into.
// Its mode is the direction: 1 reads, 2 writes (CBufferIO::ModeRead,
// CBufferIO::ModeWrite).  Values serialise themselves with
// CRpnData::Serialize, one routine for both directions:
//
//   kind (4 bytes), flags (4 bytes), then by kind
//     REAL        the double
//     INT         the 32-bit integer
//     STRING      the text in the buffer's text form
//     DICTIONARY  entry count, then key text and value for each entry
//     ARRAY_R     count, then the doubles as one block
//     ARRAY       count, then each value
//     FORMULA     the compiled tree
//     FUNCTION    the function's name (read back as nothing: the value stays null)
//     COMPLEX     real part, imaginary part
//   and nothing for the other kinds.

#include "support/bufferio.h"

class CRpnBuffer : public CScribeBuffer
{
public:
    using CScribeBuffer::CScribeBuffer;

    // Reads a 32-bit word; 0 when fewer than four bytes are left (the rest
    // is then passed over).
    std::uint32_t ReadWord();

    // Values nested deeper than this are read as null: a damaged buffer
    // cannot exhaust the stack.
    static constexpr int MaxDepth = 1000;
    int m_depth = 0;
};
