#include "graphdata/exchange/matexport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTemporaryFile>

#include <matio.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>
#include <vector>

QStringList MatVariableNames(const CGraphColumn *const *columns, int count)
{
    QStringList names;
    QSet<QString> used;
    for (int i = 0; i < count; ++i) {
        QString name = columns[i] ? columns[i]->m_name : QString();
        name.replace(QLatin1Char('('), QLatin1Char('_'));
        name.remove(QLatin1Char(')'));
        name = name.trimmed();
        if (name.isEmpty() || name == QLatin1String("_"))
            name = QStringLiteral("Graph_%1").arg(i);
        for (QChar &c : name) {
            const char16_t u = c.unicode();
            const bool ok = (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_';
            if (!ok)
                c = QLatin1Char('_');
        }
        const char16_t first = name.at(0).unicode();
        if (!((first >= 'a' && first <= 'z') || (first >= 'A' && first <= 'Z')))
            name.prepend(QStringLiteral("V_"));
        name.truncate(63);
        QString unique = name;
        for (int n = 2; used.contains(unique); ++n) {
            const QString tail = QStringLiteral("_%1").arg(n);
            unique = name.left(63 - tail.size()) + tail;
        }
        used.insert(unique);
        names << unique;
    }
    return names;
}

int SaveMatFile(const QString &path, const CGraphColumn *const *columns, int count, int rows, const int *rowMap,
                QString *error)
{
    auto fail = [&](const QString &why) {
        if (error)
            *error = why;
        return 0;
    };
    if (path.isEmpty() || !columns || count < 1 || rows < 1)
        return 0;
    const QFileInfo target(path);
    // A temporary name beside the target, so that the rename stays on one
    // file system.
    QString temporary;
    {
        QTemporaryFile probe(target.absoluteDir().filePath(target.fileName() + QStringLiteral(".XXXXXX")));
        probe.setAutoRemove(false);
        if (!probe.open())
            return fail(probe.errorString());
        temporary = probe.fileName();
        // libmatio makes the file again, with the usual permissions.
        probe.remove();
    }
    const QByteArray narrowTemporary = QFile::encodeName(temporary);
    mat_t *mat = Mat_CreateVer(narrowTemporary.constData(), nullptr, MAT_FT_MAT5);
    if (!mat) {
        QFile::remove(temporary);
        return fail(QStringLiteral("cannot create %1").arg(temporary));
    }
    const QStringList names = MatVariableNames(columns, count);
    std::vector<double> data;
    bool ok = true;
    // libmatio does not always pass on a failed write (a full disk); the
    // file must at least hold the 128-byte header and every value.
    qint64 leastSize = 128;
    for (int c = 0; c < count && ok; ++c) {
        const CGraphColumn *column = columns[c];
        const int length = rowMap ? rows : column ? column->m_count : 0;
        data.assign(static_cast<std::size_t>(std::max(length, 0)), 0.0);
        for (int i = 0; i < length; ++i) {
            if (rowMap) {
                int r = rowMap[i];
                if (r < 0 || !column || r >= column->m_count)
                    r = i;
                const bool valid = column && r < column->m_count && column->m_valid[r] == 1;
                data[i] = valid ? column->m_values[r] : std::numeric_limits<double>::infinity();
            } else {
                data[i] = column->m_valid[i] == 1 ? column->m_values[i] : std::numeric_limits<double>::quiet_NaN();
            }
        }
        leastSize += qint64(sizeof(double) * data.size());
        std::size_t dims[2] = {data.size(), 1};
        const QByteArray name = names[c].toLatin1();
        matvar_t *var = Mat_VarCreate(name.constData(), MAT_C_DOUBLE, MAT_T_DOUBLE, 2, dims, data.data(),
                                      MAT_F_DONT_COPY_DATA);
        if (!var) {
            ok = false;
            break;
        }
        ok = Mat_VarWrite(mat, var, MAT_COMPRESSION_NONE) == 0;
        Mat_VarFree(var);
    }
    ok = Mat_Close(mat) == 0 && ok && QFileInfo(temporary).size() >= leastSize;
    if (!ok) {
        QFile::remove(temporary);
        return fail(QStringLiteral("writing %1 failed").arg(temporary));
    }
    std::error_code code;
    std::filesystem::rename(std::filesystem::path(narrowTemporary.constData()),
                            std::filesystem::path(QFile::encodeName(target.absoluteFilePath()).constData()), code);
    if (code) {
        QFile::remove(temporary);
        return fail(QString::fromLocal8Bit(code.message().c_str()));
    }
    return 1;
}
