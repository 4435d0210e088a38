#pragma once
// One serialising byte buffer for both directions.  The same call writes in
// mode 2 and reads in mode 1, so a class serialises itself with one routine:
//
//     void Thing::Serialize(CBufferIO &io) { io.Transfer(m_count); io.Transfer(m_value); }
//
// Numbers are stored little-endian, as they lie in memory.  Reading never runs
// past the bytes in use: a short read gives what remains and clears the rest of
// the target.

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <type_traits>

class CMyDoubleArray;

class CBufferIO
{
public:
    enum Mode : std::int32_t { ModeNone = 0, ModeRead = 1, ModeWrite = 2 };

    explicit CBufferIO(std::uint16_t versionA = 0, std::uint16_t versionB = 0,
                       std::uint16_t versionC = 0, std::uint16_t versionD = 0);
    CBufferIO(const CBufferIO &other);            // copies the bytes in use
    CBufferIO &operator=(const CBufferIO &other);
    virtual ~CBufferIO();

    // Direction and content.
    void Reset(int mode, int capacity);
    void Grow(int extra);
    bool Seek(int length);
    int AddZeroes(int n);

    int GetMode() const { return m_mode; }
    bool IsReading() const { return m_mode == ModeRead; }
    bool IsWriting() const { return m_mode == ModeWrite; }
    int GetLength() const { return m_length; }
    int GetCapacity() const { return m_capacity; }
    int GetPosition() const { return int(m_cursor - m_data); }
    int GetRemaining() const { return m_length - GetPosition(); }
    bool AtEnd() const { return GetRemaining() <= 0; }
    const unsigned char *GetData() const { return m_data; }
    QByteArray ToByteArray() const;
    // Replaces the content with `bytes` and starts reading them.
    void LoadForReading(const QByteArray &bytes);

    // Raw bytes, in the direction of the mode.
    void Transfer(void *value, int size);

    // Numbers of every width, in the direction of the mode.
    template <typename T>
        requires std::is_arithmetic_v<T> || std::is_enum_v<T>
    CBufferIO &Transfer(T &value)
    {
        Transfer(static_cast<void *>(&value), int(sizeof(T)));
        return *this;
    }

    // Counted blocks: a signed 32-bit length ahead of the bytes.
    void TransferBlock(CBufferIO &other);
    void TransferBlock(QByteArray &bytes);
    // Reads into a fixed target of `targetSize` bytes, skipping any surplus;
    // returns the bytes stored.  In mode 2 writes `targetSize` bytes.
    int TransferBlock(void *target, int targetSize);
    void TransferArray(CMyDoubleArray &values);

    // Text: u32 byte length with the terminator, then UTF-16LE with the
    // terminator.  Streams older than version 10 (or 10 with a negative minor)
    // hold an i16 length and narrow text in the local code page instead.
    void TransferString(QString &text);

    // The four version words as the header of a record.
    void TransferVersion();

    std::uint16_t m_versionA, m_versionB, m_versionC, m_versionD;
    std::int32_t m_mode = ModeNone;
    std::int32_t m_growBy = 256;
    std::int32_t m_capacity = 0;
    unsigned char *m_data = nullptr;
    std::int32_t m_length = 0;
    unsigned char *m_cursor = nullptr;
    std::uint32_t m_reserved[2] = {0, 0};

protected:
    void write(const void *value, int size);
    // Copies up to `size` bytes from the cursor, zero-filling what is missing.
    void read(void *value, int size);
    void skip(int size);
    // The length word of a counted block: 0 when not all four bytes remain,
    // a negative length reads as 0, and a length past the end is cut.
    int readCount();

private:
    bool oldStringForm() const;
};

// The buffer that saved values and objects are scribed into.
class CScribeBuffer : public CBufferIO
{
public:
    using CBufferIO::CBufferIO;
};
