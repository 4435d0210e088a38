#pragma once
// Matrices: Matrix, Transpose, Eye and Zeros make them; Cofactor, Adjoint,
// Inverse and Determinant compute on their cells as values (complex cells
// allowed), the D-variants in doubles.  Both expand by minors, whose work
// grows as n!: from 5 by 5 on inverseCH and determinantCH, which
// factorise the matrix, are the right choice.  eigen, eigenvector, inverseCH
// and determinantCH take an optional size and then the matrix as row arrays
// or as one flat row-major array.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"

#define TARN_MATRIX_NODE(Class, Kind, Name)                                                                      \
    class Class : public CNodeScriptFunction                                                                     \
    {                                                                                                            \
    public:                                                                                                      \
        int GetKind() const override { return Kind; }                                                            \
        QString GetName() const override { return QStringLiteral(Name); }                                        \
        CRpnNode *CreateSame() const override { return new Class; }                                              \
        int DoFunction(CRpnData &result, QString &errorText) override;                                           \
    };

TARN_MATRIX_NODE(CNodeMatrix, RPN_NODE_MATRIX, "Matrix")
TARN_MATRIX_NODE(CNodeMatrixTranspose, RPN_NODE_MATRIX_TRANSPOSE, "Transpose")
TARN_MATRIX_NODE(CNodeMatrixEye, RPN_NODE_MATRIX_EYE, "Eye")
TARN_MATRIX_NODE(CNodeMatrixZeros, RPN_NODE_MATRIX_ZEROS, "Zeros")
TARN_MATRIX_NODE(CNodeMatrixCofactor, RPN_NODE_MATRIX_COFACTOR, "Cofactor")
TARN_MATRIX_NODE(CNodeMatrixAdjoint, RPN_NODE_MATRIX_ADJOINT, "Adjoint")
TARN_MATRIX_NODE(CNodeMatrixInverse, RPN_NODE_MATRIX_INVERSE, "Inverse")
TARN_MATRIX_NODE(CNodeMatrixDeterminant, RPN_NODE_MATRIX_DETERMINANT, "Determinant")
TARN_MATRIX_NODE(CNodeMatrixCofactor_Dbl, RPN_NODE_MATRIX_DCOFACTOR, "DCofactor")
TARN_MATRIX_NODE(CNodeMatrixAdjoint_Dbl, RPN_NODE_MATRIX_DADJOINT, "DAdjoint")
TARN_MATRIX_NODE(CNodeMatrixInverse_Dbl, RPN_NODE_MATRIX_DINVERSE, "DInverse")
TARN_MATRIX_NODE(CNodeMatrixDeterminant_Dbl, RPN_NODE_MATRIX_DDETERMINANT, "DDeterminant")

// The host routines: the size and the matrix, then Calculate.
class CNodeCH : public CNodeScriptFunction
{
public:
    int DoFunction(CRpnData &result, QString &errorText) override;

protected:
    // n by n cells row-major; imaginary parts only on the complex path.
    virtual int Calculate(int n, bool complex, const std::vector<double> &re, const std::vector<double> &im,
                          CRpnData &result) = 0;
};

#define TARN_CH_NODE(Class, Base, Kind, Name)                                                                    \
    class Class : public Base                                                                                    \
    {                                                                                                            \
    public:                                                                                                      \
        int GetKind() const override { return Kind; }                                                            \
        QString GetName() const override { return QStringLiteral(Name); }                                        \
        CRpnNode *CreateSame() const override { return new Class; }                                              \
                                                                                                                 \
    protected:                                                                                                   \
        int Calculate(int n, bool complex, const std::vector<double> &re, const std::vector<double> &im,          \
                      CRpnData &result) override;                                                                \
    };

TARN_CH_NODE(CNodeCH_eigen, CNodeCH, RPN_NODE_CH_EIGEN, "eigen")
TARN_CH_NODE(CNodeCH_eigenVector, CNodeCH_eigen, RPN_NODE_CH_EIGENVECTOR, "eigenvector")
TARN_CH_NODE(CNodeCH_inverse, CNodeCH, RPN_NODE_CH_INVERSE, "inverseCH")
TARN_CH_NODE(CNodeCH_determinant, CNodeCH, RPN_NODE_CH_DETERMINANT, "determinantCH")

#undef TARN_MATRIX_NODE
#undef TARN_CH_NODE

// The largest size the host routines take.
inline constexpr int RpnMaxHostMatrixSize = 2000;

// The determinant of an n by n row-major matrix by expansion along the first
// row, in doubles.
double RpnLaplaceDeterminant(int n, const double *m);
// The inverse by transposed cofactors over that determinant: cells are not
// finite for a singular matrix.
void RpnLaplaceInverse(int n, const double *m, double *inv);

class CRpnPrototypeArray;
void ProvideMatrixFunctions(CRpnPrototypeArray &prototypes);
