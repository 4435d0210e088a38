// Tables: files of each type written here and read with ReadTable, the
// header and row errors, GetTableValue at, between and beyond the points,
// and Lookup_table over a table bound to the call.

#include "functions/rpntablefunctions.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"

#include "formulatest.h"
#include "functionstest.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <cmath>

namespace {

// A folder of table files for one test.
class TableFiles
{
public:
    QString write(const char *name, const char *text)
    {
        const QString path = m_dir.filePath(QString::fromLatin1(name));
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
        return path;
    }
    std::string path(const char *name) const { return m_dir.filePath(QString::fromLatin1(name)).toStdString(); }

private:
    QTemporaryDir m_dir;
};

// "GetTableValue(t, <args>)" after reading `file` as `type`.
std::string lookUp(const std::string &file, const char *type, const char *args)
{
    CEquationTree tree;
    const std::string read = "t = ReadTable(\"" + file + "\", \"" + type + "\")";
    const std::string setup = Eval(read.c_str(), &tree);
    if (setup.rfind("E:", 0) == 0)
        return setup;
    const std::string call = std::string("GetTableValue(t, ") + args + ")";
    return Eval(call.c_str(), &tree);
}

std::string readError(const std::string &file, const char *type)
{
    const std::string text = "ReadTable(\"" + file + "\", \"" + type + "\")";
    return Eval(text.c_str());
}

std::string failure(const std::string &source, const QString &text)
{
    return "E:" + source + " " + text.toStdString() + "@1,0";
}

} // namespace

TEST(RpnTables, InterpolationAtBetweenAndBeyondThePoints)
{
    TableFiles files;
    const std::string xy = files.write("xy.txt", "  1 10\r\n2, 20\n\n4\t40  \n").toStdString();
    const std::string one = files.write("one.txt", "5 7").toStdString();
    const std::string comment = files.write("comment.txt", "1 10\n2 20\n3 30\n# the end\n").toStdString();
    const std::string exps = files.write("exps.txt", "1d0 1E1\n+2 2D1\n").toStdString();
    // rows 2, columns 3: X = {0, 1}, Y = {0, 10, 20}.
    const std::string ip2 = files.write("ip2.txt", "2 3\n0 1\n0 10 20\n1 2 3\n5 6 7\n").toStdString();
    const std::string ints = files.write("ints.txt", "2 3\n1 2 3\n4 5 6\n").toStdString();
    // nx 2, ny 2, nz 2: slice 0 is all 0 but one cell, slice 1 adds 100.
    const std::string ip3 =
        files.write("ip3.txt", "2 2 2\n0 1\n0 1\n0 10\n0 0\n0 4\n100 100\n100 104\n").toStdString();
    struct Case {
        const std::string &file;
        const char *type;
        const char *args;
        std::string expect;
    } cases[] = {
        {xy, "XY", "1", "REAL:10"},
        {xy, "", "3", "REAL:30"},
        {xy, "xy", "1.5", "REAL:15"},
        {xy, "XY", "0", "REAL:10"},   // below the first x: the first y
        {xy, "XY", "99", "REAL:40"},  // above the last: the last y
        {one, "XY", "-3", "REAL:7"},  // one pair: its y everywhere
        {one, "XY", "1e9", "REAL:7"},
        {comment, "XY", "3", "REAL:20"}, // the comment line cost the last pair
        {exps, "XY", "1.5", "REAL:15"},
        {ip2, "2DInterpolation", "0.5, 5", "REAL:3.5"},
        {ip2, "2 D IP", "1, 20", "REAL:7"},
        {ip2, "2dip", "-1, -1", "REAL:1"},  // clamped at both axes
        {ip2, "2DIP", "9, 15", "REAL:6.5"},
        {ints, "2DInteger", "2, 3", "REAL:6"},
        {ints, "2DI", "1.51, 2.51", "REAL:6"}, // floor(2.51 + 0.49) is 3
        {ints, "2DI", "1, 2.5", "REAL:2"},     // floor(2.99) is 2
        {ints, "2DI", "0, 1", "REAL:0"},       // outside: 0, no error
        {ints, "2DI", "3, 1", "REAL:0"},
        {ip3, "3DIP", "1, 1, 0", "REAL:4"},
        {ip3, "3DInterpolation", "1, 1, 5", "REAL:54"},
        {ip3, "3DIP", "0.5, 1, 20", "REAL:102"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(lookUp(c.file, c.type, c.args), c.expect) << c.file << " " << c.type << " " << c.args;
}

TEST(RpnTables, HeaderAndRowErrors)
{
    TableFiles files;
    const std::string xy = files.write("xy.txt", "1 2\n").toStdString();
    struct Case {
        const char *name;
        const char *text;
        const char *type;
        QString error; // empty: the read succeeds
    } cases[] = {
        {"h1.txt", "x 3\n1 2 3\n", "2DI", RpnMessage(43405, {1})},
        {"h2.txt", "2\n1 2 3\n", "2DI", RpnMessage(43405, {1})},
        {"h3.txt", "2 2e1\n1 2\n", "2DI", RpnMessage(43405, {1})}, // no exponents in the header
        {"h4.txt", "3", "2DIP", QString()},                       // an empty table, no error
        {"h5.txt", "a 3", "3DIP", RpnMessage(43405, {1})},
        {"short.txt", "2 3\n1 2\n4 5 6\n", "2DI", RpnMessage(43405, {2})},
        {"short2.txt", "2 2\n0 1\n0 1\n3\n1 2\n", "2DIP", RpnMessage(43405, {4})},
        {"early.txt", "3 3\n1 2 3\n", "2DI", QString()}, // the rest stays 0
        {"huge.txt", "100000 100000\n1\n", "2DI",
         RpnMessage(43415, {QStringLiteral("10000000000"), std::int64_t(RpnMaxTableCells)})},
        // Millions of slices of few cells: each slice counts as four cells more.
        {"slices.txt", "1 1 33333333\n", "3DIP",
         RpnMessage(43415, {QStringLiteral("200000000"), std::int64_t(RpnMaxTableCells)})},
        {"noRows.txt", "0 2 61002100\n", "3DIP",
         RpnMessage(43415, {QStringLiteral("305010502"), std::int64_t(RpnMaxTableCells)})},
        {"fewSlices.txt", "2 2 1000\n", "3DIP", QString()},
    };
    for (const Case &c : cases) {
        const QString path = files.write(c.name, c.text);
        const std::string source = "ReadTable(\"" + path.toStdString() + "\", \"" + c.type + "\")";
        const std::string got = readError(path.toStdString(), c.type);
        if (c.error.isEmpty()) {
            EXPECT_EQ(got.rfind("E:", 0), std::string::npos) << c.name << ": " << got;
        } else {
            EXPECT_EQ(got, failure(source, RpnMessage(43403, {"ReadTable", path, c.error}))) << c.name;
        }
    }
    // The messages of the call itself.
    const std::string missing = files.path("none.txt");
    EXPECT_EQ(Eval("ReadTable(\"a\")"),
              failure("ReadTable(\"a\")",
                      RpnMessage(43400, {"ReadTable", "ReadTable", "XY , 2DInterpolation , 2DInteger , 3DInterpolation"})));
    EXPECT_EQ(readError(missing, "XY"),
              failure("ReadTable(\"" + missing + "\", \"XY\")",
                      RpnMessage(43401, {"ReadTable", QString::fromStdString(missing)})));
    EXPECT_EQ(readError(xy, "4D"),
              failure("ReadTable(\"" + xy + "\", \"4D\")",
                      RpnMessage(43404, {"ReadTable", "4D", "XY , 2DInterpolation , 2DInteger , 3DInterpolation"})));
    // A variable as the type gives its text.
    CEquationTree tree;
    const std::string viaVariable = "kind = \" x Y\"; t = ReadTable(\"" + xy + "\", kind)";
    Eval(viaVariable.c_str(), &tree);
    EXPECT_EQ(Eval("GetTableValue(t, 5)", &tree), "REAL:2");
}

namespace {
// A host that knows no variable at all.
void knowsNothing(CRpnData &, int, int, void *, void *, CRpnNode *, const QString &, int &found)
{
    found = 0;
}
} // namespace

// Under a host's variables (in a tree that lets names go unassigned) a word
// the host does not know names the type; a word that starts with a digit is
// a number and a word, so such types are written as texts.
TEST(RpnTables, BareWordTypesUnderAHost)
{
    TableFiles files;
    const std::string ints = files.write("ints.txt", "1 2\n5 6\n").toStdString();
    struct Case {
        const char *type;
        const char *args;
        std::string expect;
    } cases[] = {
        {"XY", "1", "REAL:2"},
        {"xy", "1", "REAL:2"},
        {"\"2DI\"", "1, 2", "REAL:6"},
        {"2DI", "1, 2", "unknown:2"},
        {"DI", "1, 2", "unknown:DI"},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        tree.SetVariableAccess(knowsNothing, nullptr);
        tree.m_freeVariables = 1;
        const std::string read = "ReadTable(\"" + ints + "\", " + c.type + ")";
        const std::string text = "GetTableValue(" + read + ", " + c.args + ")";
        std::string expect = c.expect;
        if (expect.rfind("unknown:", 0) == 0) {
            const QString message = RpnMessage(43404, {"ReadTable", QString::fromStdString(expect.substr(8)),
                                                       "XY , 2DInterpolation , 2DInteger , 3DInterpolation"});
            expect = "E:" + text + " " + message.toStdString() + "@1,14";
        }
        EXPECT_EQ(Eval(text.c_str(), &tree), expect) << text;
    }
}

TEST(RpnTables, GetTableValueMessages)
{
    TableFiles files;
    const std::string ip2 = files.write("ip2.txt", "1 1\n0\n0\n3\n").toStdString();
    const std::string ip3 = files.write("ip3.txt", "1 1 1\n0\n0\n0\n3\n").toStdString();
    const QString name = QStringLiteral("GetTableValue");
    struct Case {
        std::string setup, call;
        QString message;
    } cases[] = {
        {"", "GetTableValue(1)", RpnMessage(43406, {name, name})},
        {"", "GetTableValue(1, 2)", RpnMessage(43407, {name, name})},
        {"t = ReadTable(\"" + ip2 + "\", \"2DIP\")", "GetTableValue(t, 2)", RpnMessage(43408, {name, name})},
        {"t = ReadTable(\"" + ip3 + "\", \"3DIP\")", "GetTableValue(t, 2, 2)", RpnMessage(43409, {name, name})},
    };
    for (const Case &c : cases) {
        CEquationTree tree;
        if (!c.setup.empty()) {
            EXPECT_EQ(Eval(c.setup.c_str(), &tree).rfind("E:", 0), std::string::npos) << c.setup;
        }
        EXPECT_EQ(Eval(c.call.c_str(), &tree), failure(c.call, c.message)) << c.call;
    }
    // The reserved names fail without a text of their own.
    for (const char *call : {"Graph2D(1)", "Graph3D(1)", "Graph4D()"})
        EXPECT_EQ(Eval(call), "E:" + std::string(call) + " @1,0") << call;
}

namespace {

// Two output columns over the grid: the cells given and those plus 1000.
std::shared_ptr<CRpnLookupGrid> grid(std::vector<std::vector<double>> axes, std::vector<double> cells,
                                     int outputs = 2)
{
    auto table = std::make_shared<CRpnLookupGrid>();
    std::vector<std::vector<double>> columns;
    for (int c = 0; c < outputs; ++c) {
        columns.push_back(cells);
        for (double &v : columns.back())
            v += 1000.0 * c;
    }
    EXPECT_TRUE(table->Assign(std::move(axes), std::move(columns)));
    return table;
}

void bindAll(CRpnNode *node, const std::shared_ptr<CRpnLookupGrid> &table)
{
    if (!node)
        return;
    if (auto *lookup = dynamic_cast<CLookup_table *>(node))
        lookup->BindTable(table);
    for (int i = 0; i < node->GetOperandCount(); ++i)
        bindAll(node->GetOperand(i), table);
}

// Runs `text` with the table bound to every Lookup_table call and, as a
// value, in the variable `t`: "REAL:<value>" or "E:<message>@row,col".
std::string lookUpIn(const std::shared_ptr<CRpnLookupGrid> &table, const char *text)
{
    CEquationTree tree;
    CRpnData value; // without a table, `t` holds the null value
    if (table)
        value.SetLookupTable(new CRpnLookupGrid(*table));
    tree.SetVariable(QStringLiteral("t"), value);
    if (tree.Compile(QString::fromUtf8(text), nullptr, true) != 1)
        return "E:" + tree.GetErrorMessage().toStdString();
    bindAll(tree.GetRoot(), table);
    const int ok = tree.Run(value);
    if (value.IsArray()) // the statements' values: the last is the call's
        value = value.GetAt(value.GetSize() - 1);
    return ok ? "REAL:" + value.GetText().toStdString()
              : "E:" + tree.GetErrorMessage().toStdString() + "@" + std::to_string(tree.GetErrorRow()) + ","
            + std::to_string(tree.GetErrorCol());
}

} // namespace

class RpnLookupTable : public ::testing::TestWithParam<const char *>
{
};

// Each case runs with the table as a value ("t") and bound to the call ("\"t\"").
TEST_P(RpnLookupTable, OptionsAndDimensions)
{
    const auto line = grid({{0, 1, 2, 4}}, {0, 10, 20, 40});
    const auto square = grid({{0, 1}, {0, 10}}, {0, 1, 10, 11}); // (x, y): x + y
    const auto empty = grid({{0}}, {0}, 0);
    auto replace = [](std::string text, const std::string &table) {
        for (std::size_t at; (at = text.find('@')) != std::string::npos;)
            text.replace(at, 1, table);
        return text;
    };
    const std::string t = GetParam();
    struct Case {
        std::shared_ptr<CRpnLookupGrid> table;
        const char *text;
        std::string expect;
    } cases[] = {
        {line, "Lookup_table(@, 3)", "REAL:30"},
        {line, "Lookup_table(@, 2)", "REAL:20"},
        {line, "Lookup_table(@, -1)", "REAL:0"},                          // clamped
        {line, "_Lookup_Options_ = 1; Lookup_table(@, -1)", "REAL:-10"}, // extrapolated below
        {line, "_Lookup_Options_ = 1; Lookup_table(@, 6)", "REAL:40"},   // but not above
        {line, "_Lookup_Options_ = 2; Lookup_table(@, 6)", "REAL:60"},
        {line, "_Lookup_Options_ = 2.995; Lookup_table(@, -1)", "REAL:-10"}, // the word is an integer: 3
        {square, "Lookup_table(@, 0.5, 5)", "REAL:5.5"},
        {square, "Lookup_table(@, 1, 10)", "REAL:11"},
        {square, "_Lookup_Options_ = 3; Lookup_table(@, 2, 20)", "REAL:22"},
        {line, "Lookup_table(@, 1, 2)", "43411"},
        {square, "Lookup_table(@, 1)", "43412"},
        {square, "Lookup_table(@, 1, 2, 3, 4, 5)", "43415"}, // five coordinates: the fifth is not read
        {empty, "Lookup_table(@, 1)", "43410"},
        {nullptr, "Lookup_table(@, 1)", "43413"},
        {line, "Lookup_table(@)", "43413"},
        {line, "Lookup_table(1, 2)", "43413"},              // neither a text nor a table
        {line, "Lookup_table(Array(1), 2)", "43413"},
    };
    for (const Case &c : cases) {
        const std::string text = replace(c.text, t);
        std::string expect = c.expect;
        if (expect.rfind("REAL:", 0) != 0) {
            const int number = std::stoi(expect);
            // Five coordinates count as four against a two-axis table.
            const QString message = RpnMessage(number == 43415 ? 43412 : number);
            expect = FunctionMessage(text + " " + message.toStdString());
        }
        EXPECT_EQ(lookUpIn(c.table, text.c_str()), expect) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(ValueAndBound, RpnLookupTable, ::testing::Values("t", "\"t\""));

TEST(RpnTables, LookupGridRefusesSizesThatDoNotFit)
{
    struct Case {
        std::vector<std::vector<double>> axes;
        std::vector<std::vector<double>> columns;
        bool ok;
    } cases[] = {
        {{{0, 1}}, {{5, 6}}, true},
        {{{0, 1}, {0, 1, 2}}, {{1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 0, 0}}, true},
        {{{0, 1}}, {}, true}, // no outputs: the call says the table is empty
        {{}, {}, false},
        {{{0}, {0}, {0}, {0}, {0}}, {{1}}, false},
        {{{0, 1}, {}}, {{}}, false},
        {{{0, 1}}, {{1, 2, 3}}, false},
    };
    for (const Case &c : cases) {
        CRpnLookupGrid table;
        EXPECT_EQ(table.Assign(c.axes, c.columns), c.ok) << c.axes.size();
        EXPECT_EQ(table.GetDimension(), c.ok ? int(c.axes.size()) : 0);
    }
}

// The forms a number of an XY file may take, each read alone and at the end
// of the text, where no line break follows it.
TEST(RpnTables, NumberForms)
{
    const std::string longOne = "1." + std::string(120, '5');
    struct Case {
        std::string cell;
        double value; // NaN: the cell is no number
    } cases[] = {
        {"+5", 5},        {"-.5", -0.5},   {"+-5", -5},      {"1e5e3", 1e5}, {"2.5D2", 250},
        {"1d-1", 0.1},    {"1e400", HUGE_VAL}, {"1.5x", NAN}, {"inf", NAN},   {"-nan", NAN},
        {"++5", NAN},     {"e5", NAN},     {longOne, 1.5555555555555556},
    };
    for (const Case &c : cases) {
        for (const char *tail : {"\n1 2", ""}) {
            const std::string text = "0 " + c.cell + tail;
            CRpnTableRecord table;
            QString error;
            ASSERT_TRUE(ParseTableText(text, CRpnTableRecord::XY, table, error)) << text;
            if (std::isnan(c.value)) {
                EXPECT_EQ(table.count1, 0) << text; // the bad pair ends the reading
                continue;
            }
            ASSERT_GE(table.count1, 1) << text;
            EXPECT_DOUBLE_EQ(table.axis2[0], c.value) << text;
        }
    }
}

TEST(RpnTables, AxisLocationAndFuzzedTexts)
{
    const double axis[] = {1, 2, 2, 5};
    struct Case {
        int n;
        double v;
        int index;
        double fraction;
    } cases[] = {
        {0, 3, -1, 0}, {1, 9, 0, 0}, {4, 0, 0, 0}, {4, 1, 0, 0}, {4, 1.5, 0, 0.5},
        {4, 2, 1, 0},  {4, 3.5, 2, 0.5}, {4, 5, 3, 0}, {4, 8, 3, 0},
    };
    for (const Case &c : cases) {
        int index = 7;
        double fraction = 7;
        LocateOnAxis(axis, c.n, c.v, index, fraction);
        EXPECT_EQ(index, c.index) << c.n << " " << c.v;
        EXPECT_DOUBLE_EQ(fraction, c.fraction) << c.n << " " << c.v;
    }
    // Texts that are no tables end in a message or a table, never out of bounds.
    const char *texts[] = {"", ",,,\r\n\r\n", "1", "1 2 3 4 5", "-1 -1\n", "2 2\n\n\n\n", "1e999 1\n2 nan\n",
                           "3 3 3\n1\n1 2 3 4\n", "0 0\n", "2147483647 1\n"};
    for (const char *text : texts) {
        for (int type : {1, 21, 22, 31}) {
            CRpnTableRecord table;
            QString error;
            ParseTableText(text, type, table, error);
            EXPECT_FALSE(std::isnan(table.ValueAt(0.5, 0.5, 0.5)) && type != 1) << text << " " << type;
        }
    }
}
