#pragma once
// Tables of numbers: ReadTable makes a Table value from a text file,
// GetTableValue interpolates in one, Lookup_table interpolates in a table
// object that the host binds to the call.  Graph2D, Graph3D and Graph4D keep
// their names taken and always fail.
//
// The reader and the interpolation are plain functions as well, so that the
// fuzz target and the benchmark reach them without a formula.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"
#include "formula/rpnseams.h"

#include <memory>
#include <string_view>
#include <vector>

// The record of a Table value.
class CRpnTableRecord : public CRpnObject
{
public:
    enum Type : int { XY = 1, Interpolation2D = 21, Integer2D = 22, Interpolation3D = 31 };

    int type = XY;
    int count1 = 0; // XY: pairs; others: rows (the X length)
    int count2 = 0; // columns (the Y length)
    int count3 = 0; // slices (the Z length)
    std::vector<double> axis1, axis2, axis3;
    // Value matrices, row-major: cell (i, j) of a slice at i * count2 + j.
    std::vector<std::vector<double>> slices;

    // The value at (x, y, z): clamped at the edges, linear between points; a
    // 2DInteger table takes 1-based cells and gives 0 outside.
    double ValueAt(double x, double y, double z) const;
};

// The type keyword of `text` (trimmed, blanks and tabs removed, any case);
// 0 when it is not known.  The empty text is XY.
int TableTypeFromText(const QString &text);

// The largest number of cells the header of one table may ask for.
inline constexpr std::int64_t RpnMaxTableCells = std::int64_t(1) << 26;

// Parses the (already trimmed) text of a table file.  False with `error` set
// when a header or a row is wrong; a row error does not stop the reading, the
// first one is kept.
bool ParseTableText(std::string_view text, int type, CRpnTableRecord &table, QString &error);

// Where v lies on an ascending axis: the index of the left point and the
// fraction towards the next one, both ends clamped (index -1 for no points).
void LocateOnAxis(const double *axis, int n, double v, int &index, double &fraction);

// A table that a host gives to Lookup_table, bound to the call or as a value
// (SetLookupTable): output columns over a grid of one to four axes.
class CRpnLookupTable : public CRpnObject
{
public:
    virtual int GetOutputCount() const = 0;
    virtual int GetDimension() const = 0;
    virtual const std::vector<double> &GetAxis(int dimension) const = 0;
    // The cell of output `column` at the grid point `indices` (GetDimension of them).
    virtual double GetCell(int column, const int *indices) const = 0;
};

// A lookup table held in memory: the cells of each output column over the
// grid, the first axis running fastest.
class CRpnLookupGrid : public CRpnLookupTable
{
public:
    // `axes` holds one to four axes; `columns` one vector of cells for each
    // output, each with as many cells as the grid has points.  False (and
    // nothing kept) when the sizes do not fit.
    bool Assign(std::vector<std::vector<double>> axes, std::vector<std::vector<double>> columns);

    int GetOutputCount() const override { return int(m_columns.size()); }
    int GetDimension() const override { return int(m_axes.size()); }
    const std::vector<double> &GetAxis(int dimension) const override { return m_axes[std::size_t(dimension)]; }
    double GetCell(int column, const int *indices) const override;

private:
    std::vector<std::vector<double>> m_axes;
    std::vector<std::vector<double>> m_columns;
};

// ReadTable(filepath, type)
class CNodeReadTable : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_READ_TABLE; }
    QString GetName() const override { return QStringLiteral("ReadTable"); }
    CRpnNode *CreateSame() const override { return new CNodeReadTable; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// GetTableValue(Table, x, y, z)
class CNodeGetTableValue : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_GET_TABLE_VALUE; }
    QString GetName() const override { return QStringLiteral("GetTableValue"); }
    CRpnNode *CreateSame() const override { return new CNodeGetTableValue; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// Lookup_table(table, x, y, z, a): the table is a lookup table value, or the
// one bound to the node when a text stands in its place; the variable _Lookup_Options_ switches extrapolation
// below (bit 1) and above (bit 2) the axes on.
class CLookup_table : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_LOOKUP_TABLE; }
    QString GetName() const override { return QStringLiteral("Lookup_table"); }
    CRpnNode *CreateSame() const override { return new CLookup_table; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    int DoFunction(CRpnData &result, QString &errorText) override;

    void BindTable(std::shared_ptr<const CRpnLookupTable> table) { m_table = std::move(table); }

    // The interpolation itself: all output columns into `outputs`; false
    // when an axis is empty.
    static bool Interpolate(const CRpnLookupTable &table, const double *coordinates, int options,
                            std::vector<double> &outputs);

private:
    std::shared_ptr<const CRpnLookupTable> m_table;
};

// Reserved names: they clear the result and fail without a text.
class CGraph2D : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_GRAPH2D; }
    QString GetName() const override { return QStringLiteral("Graph2D"); }
    CRpnNode *CreateSame() const override { return new CGraph2D; }
    int DoFunction(CRpnData &result, QString &) override;
};
class CGraph3D : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_GRAPH3D; }
    QString GetName() const override { return QStringLiteral("Graph3D"); }
    CRpnNode *CreateSame() const override { return new CGraph3D; }
    int DoFunction(CRpnData &result, QString &) override;
};
class CGraph4D : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_GRAPH4D; }
    QString GetName() const override { return QStringLiteral("Graph4D"); }
    CRpnNode *CreateSame() const override { return new CGraph4D; }
    int DoFunction(CRpnData &result, QString &) override;
};

class CRpnPrototypeArray;
void ProvideTableFunctions(CRpnPrototypeArray &prototypes);
