#include "graphdata/exchange/matexport.h"
#include "graphdata/exchange/textexport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <matio.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

CGraphColumnPtr makeColumn(const std::vector<double> &values, const std::vector<std::uint8_t> &valid,
                           const QString &name)
{
    CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(int(values.size()), name));
    for (std::size_t i = 0; i < values.size(); ++i) {
        column->m_values[i] = values[i];
        column->m_valid[i] = valid.empty() ? 1 : valid[i];
    }
    return column;
}

struct Read
{
    std::vector<std::size_t> dims;
    int classType = -1;
    std::vector<double> data;
};

std::map<std::string, Read> readBack(const QString &path)
{
    std::map<std::string, Read> out;
    mat_t *mat = Mat_Open(QFile::encodeName(path).constData(), MAT_ACC_RDONLY);
    EXPECT_NE(mat, nullptr);
    if (!mat)
        return out;
    EXPECT_EQ(Mat_GetVersion(mat), MAT_FT_MAT5);
    while (matvar_t *var = Mat_VarReadNext(mat)) {
        Read r;
        r.dims.assign(var->dims, var->dims + var->rank);
        r.classType = var->class_type;
        if (var->class_type == MAT_C_DOUBLE && var->data) {
            const double *d = static_cast<const double *>(var->data);
            r.data.assign(d, d + var->nbytes / sizeof(double));
        }
        out[var->name] = r;
        Mat_VarFree(var);
    }
    Mat_Close(mat);
    return out;
}

bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

} // namespace

TEST(MatExport, VariableNames)
{
    const struct
    {
        QString name;
        const char *variable;
    } cases[] = {
        {u"V(out)"_qs, "V_out"}, {u" I(R1) "_qs, "I_R1"}, {QString(), "Graph_2"}, {u"_"_qs, "Graph_3"},
        {u"U 1"_qs, "U_1"}, {u"1st"_qs, "V_1st"}, {u"V(out)"_qs, "V_out_2"}, {u"Time"_qs, "Time"},
    };
    std::vector<CGraphColumnPtr> owned;
    std::vector<const CGraphColumn *> list;
    for (const auto &c : cases) {
        owned.push_back(makeColumn({1}, {}, c.name));
        list.push_back(owned.back().Get());
    }
    const QStringList names = MatVariableNames(list.data(), int(list.size()));
    ASSERT_EQ(names.size(), int(std::size(cases)));
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(names[int(i)].toStdString(), cases[i].variable) << i;
}

// Written through our exporter, read back through libmatio's reader: every
// column a double column vector under its name, every value the same bits.
TEST(MatExport, ReadBackBitForBit)
{
    std::vector<double> t, u, w;
    for (int i = 0; i < 1000; ++i) {
        t.push_back(i * 1e-3);
        u.push_back(std::sin(i * 0.7) * std::pow(2.0, i % 64 - 32));
    }
    w = {1.5, -0.0, 5e-324, 7};
    std::vector<std::uint8_t> wValid = {1, 1, 1, 2};
    CGraphColumnPtr a = makeColumn(t, {}, u"Time"_qs), b = makeColumn(u, {}, u"V(out)"_qs),
                    c = makeColumn(w, wValid, u"short one"_qs);
    const CGraphColumn *list[] = {a.Get(), b.Get(), c.Get()};

    QTemporaryDir dir;
    const QString path = dir.filePath(u"cols.mat"_qs);
    QString error;
    ASSERT_EQ(SaveAsText(path, list, 3, 1000, ExportMatFile, nullptr, &error), 1) << error.toStdString();
    const auto read = readBack(path);
    ASSERT_EQ(read.size(), 3u);
    const struct
    {
        const char *name;
        const std::vector<double> *values;
    } expected[] = {{"Time", &t}, {"V_out", &u}, {"short_one", &w}};
    for (const auto &e : expected) {
        SCOPED_TRACE(e.name);
        auto it = read.find(e.name);
        ASSERT_NE(it, read.end());
        EXPECT_EQ(it->second.classType, MAT_C_DOUBLE);
        EXPECT_EQ(it->second.dims, (std::vector<std::size_t>{e.values->size(), 1}));
        ASSERT_EQ(it->second.data.size(), e.values->size());
        for (std::size_t i = 0; i < e.values->size(); ++i) {
            if (e.values == &w && i == 3)
                EXPECT_TRUE(std::isnan(it->second.data[i])); // the invalid row
            else
                ASSERT_TRUE(sameBits(it->second.data[i], (*e.values)[i])) << i;
        }
    }

    // With a row map every column has the map's length; rows not valid
    // are +infinity.
    const int map[] = {3, 0, -1, 99};
    ASSERT_EQ(SaveMatFile(path, list, 3, 4, map, &error), 1);
    const auto mapped = readBack(path);
    const auto &s = mapped.at("short_one");
    EXPECT_EQ(s.dims, (std::vector<std::size_t>{4, 1}));
    EXPECT_EQ(s.data[0], std::numeric_limits<double>::infinity());
    EXPECT_EQ(s.data[1], 1.5);
    EXPECT_EQ(s.data[2], 5e-324);
    EXPECT_EQ(s.data[3], std::numeric_limits<double>::infinity());
    EXPECT_EQ(mapped.at("Time").data[0], 3e-3);
}

// The file as an engineer's tool sees it: SciPy's loadmat, when the machine
// has it, finds each column as a double column vector under its name with
// the same bits.
TEST(MatExport, SciPyReadsTheColumns)
{
    const QString python = u"/usr/bin/python3"_qs;
    QProcess probe;
    probe.start(python, {u"-c"_qs, u"import scipy.io"_qs});
    if (!probe.waitForFinished(60000) || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0)
        GTEST_SKIP() << "SciPy is not installed";

    std::vector<double> t, u;
    for (int i = 0; i < 100; ++i) {
        t.push_back(i * 1e-3);
        u.push_back(std::sin(i * 0.7) * std::pow(2.0, i % 64 - 32));
    }
    CGraphColumnPtr a = makeColumn(t, {}, u"Time"_qs), b = makeColumn(u, {}, u"V(out)"_qs);
    const CGraphColumn *list[] = {a.Get(), b.Get()};
    QTemporaryDir dir;
    const QString path = dir.filePath(u"cols.mat"_qs);
    QString error;
    ASSERT_EQ(SaveAsText(path, list, 2, 100, ExportMatFile, nullptr, &error), 1) << error.toStdString();

    // One line per variable: name, shape, class, then every value in the
    // shortest form that reads back to the same double.
    const QString script = uR"(
import sys, scipy.io
m = scipy.io.loadmat(sys.argv[1])
for k in sorted(k for k in m if not k.startswith('__')):
    v = m[k]
    print(k, str(v.shape).replace(' ', ''), v.dtype, ' '.join(repr(float(x)) for x in v.ravel()))
)"_qs;
    QProcess reader;
    reader.start(python, {u"-c"_qs, script, path});
    ASSERT_TRUE(reader.waitForFinished(60000));
    ASSERT_EQ(reader.exitCode(), 0) << reader.readAllStandardError().toStdString();
    const QStringList lines = QString::fromUtf8(reader.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2);
    const struct
    {
        const char *head;
        const std::vector<double> *values;
    } expected[] = {{"Time (100,1) float64", &t}, {"V_out (100,1) float64", &u}};
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(expected[i].head);
        const QStringList words = lines[i].split(u' ');
        ASSERT_EQ(words.size(), 3 + int(expected[i].values->size()));
        EXPECT_EQ(words.mid(0, 3).join(u' ').toStdString(), expected[i].head);
        for (std::size_t r = 0; r < expected[i].values->size(); ++r) {
            const double read = std::strtod(words[3 + int(r)].toLatin1().constData(), nullptr);
            ASSERT_TRUE(sameBits(read, (*expected[i].values)[r])) << r << ": " << words[3 + int(r)].toStdString();
        }
    }
}
