#include "graphdata/file/graphfileformat.h"

#include "graphdata/graphcolumn.h"

#include <vector>

namespace GraphFile {

QString IdentificationText()
{
    return QStringLiteral(" Mirador file from Ondrel Engineering Inc.%1.%2.%3.%4")
        .arg(VersionMajor)
        .arg(VersionMinor)
        .arg(VersionBuild)
        .arg(VersionRevision);
}

ColumnFields ColumnFields::Of(const CGraphColumn &column, int count)
{
    ColumnFields f;
    f.count = std::uint32_t(count);
    f.orderFlags = column.m_orderFlags;
    f.kind = column.m_kind;
    f.attrFlags = column.m_attrFlags;
    f.attrValue = column.m_attrValue;
    f.minStep = column.m_minStep;
    f.evenStep = column.m_evenStep;
    f.hasInvalid = column.m_hasInvalid;
    return f;
}

void ColumnFields::ApplyTo(CGraphColumn &column) const
{
    column.m_orderFlags = orderFlags;
    column.m_kind = kind;
    column.m_attrFlags = attrFlags;
    column.m_attrValue = attrValue;
    column.m_minStep = minStep;
    column.m_evenStep = evenStep;
    column.m_hasInvalid = hasInvalid;
}

void ColumnFields::TransferWithoutCount(CBufferIO &io)
{
    io.Transfer(orderFlags);
    io.Transfer(kind);
    io.Transfer(attrFlags);
    io.Transfer(attrValue);
    io.Transfer(minStep);
    io.Transfer(evenStep);
    io.Transfer(hasInvalid);
}

void ColumnFields::Transfer(CBufferIO &io)
{
    io.Transfer(count);
    TransferWithoutCount(io);
}

void TransferZeros(CBufferIO &io, int n)
{
    if (io.IsWriting()) {
        io.AddZeroes(n);
    } else if (io.IsReading()) {
        std::vector<char> skip(std::size_t(std::max(n, 0)));
        io.Transfer(skip.data(), n);
    }
}

} // namespace GraphFile
