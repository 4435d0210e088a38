#include "formula/rpnkeywords.h"

#include "formula/rpnnode.h"

#include <mutex>

namespace {

const std::vector<CRpnKeywordRow> kLanguageKeywords = {
    {"RETURN", 11, "CNodeReturn"},
    {"ISEMPTY", 13, "CNodeIsNull"},
    {"ISNULL", 13, "CNodeIsNull"},
    {"TYPENAME", 14, "CNodeTypeName"},
    {"POW", 39, "CNodePower2"},
    {"SQRT", 37, "CNodeSqrt"},
    {"MOD", 40, "CNodeMod2"},
    {"PWR", 42, "CNodeAbsPower"},
    {"SQR", 41, "CNodeSqr"},
    {"HYPOT", 43, "CNodeHypot"},
    {"SIN", 250, "CNodeSin"},
    {"COS", 251, "CNodeCos"},
    {"TAN", 252, "CNodeTan"},
    {"ASIN", 253, "CNodeAsin"},
    {"ARCSIN", 253, "CNodeAsin"},
    {"ACOS", 254, "CNodeAcos"},
    {"ARCCOS", 254, "CNodeAcos"},
    {"ATAN", 255, "CNodeAtan"},
    {"ARCTAN", 255, "CNodeAtan"},
    {"ATAN2", 256, "CNodeAtan2"},
    {"SIND", 260, "CNodeSinD"},
    {"COSD", 261, "CNodeCosD"},
    {"TAND", 262, "CNodeTanD"},
    {"ASIND", 263, "CNodeAsinD"},
    {"ACOSD", 264, "CNodeAcosD"},
    {"ATAND", 265, "CNodeAtanD"},
    {"ATAN2D", 266, "CNodeAtan2D"},
    {"SINR", 250, "CNodeSin"},
    {"COSR", 251, "CNodeCos"},
    {"TANR", 252, "CNodeTan"},
    {"ASINR", 253, "CNodeAsin"},
    {"ACOSR", 254, "CNodeAcos"},
    {"ATANR", 255, "CNodeAtan"},
    {"ATAN2R", 256, "CNodeAtan2"},
    {"SINH", 257, "CNodeSinH"},
    {"COSH", 258, "CNodeCosH"},
    {"TANH", 259, "CNodeTanH"},
    {"MIN", 44, "CNodeMin"},
    {"MAX", 45, "CNodeMax"},
    {"SUM", 46, "CNodeSum"},
    {"EXP", 47, "CNodeExp"},
    {"LOG", 48, "CNodeLog"},
    {"LN", 48, "CNodeLog"},
    {"LOG10", 49, "CNodeLog10"},
    {"ABS", 50, "CNodeAbs"},
    {"SIGN", 51, "CNodeSign"},
    {"AVG", 312, "CNodeAvg"},
    {"AVGX", 313, "CNodeAvgX"},
    {"INT", 314, "CNodeIntegral"},
    {"HIPASS", 315, "CNodeHiPassFilter"},
    {"CEIL", 52, "CNodeCeil"},
    {"FLOOR", 53, "CNodeFloor"},
    {"COMPLEX", 75, "CNodeComplex"},
    {"POLAR", 76, "CNodePolar"},
    {"REAL", 71, "CNodeReal"},
    {"IMAG", 72, "CNodeImag"},
    {"ANGLE", 74, "CNodeAngle"},
    {"VALUE", 121, "CNodeToValue"},
    {"TOVALUE", 121, "CNodeToValue"},
    {"STRING", 122, "CNodeToString"},
    {"TOSTRING", 130, "CNode_ToString2"},
    {"ARRAY", 123, "CNodeNewArray"},
    {"ARRAYLOG", 124, "CNodeNewLogArray"},
    {"ARRAYD", 125, "CNodeNewArrayDouble"},
    {"SIZEOF", 126, "CNodeSizeOfArray"},
    {"ADDTOARRAY", 127, "CNodeAddToArray"},
    {"REMOVECELL", 131, "CNodeArrayRemoveCell"},
    {"APPENDARRAY", 129, "CNodeAppendArray"},
    {"COPY", 128, "CNodeCopy"},
    {"FINDNEXT", 171, "CNodeFindNext"},
    {"FORMULA", 141, "CNodeFormula"},
    {"EVAL", 142, "CNodeEval"},
    {"REPLACEF", 144, "CNodeReplaceFormula"},
    {"EVALM", 143, "CNodeEvalUnMarked"},
    {"EVALVARS", 145, "CNodeEvalVars"},
    {"REPLACE", 160, "CNodeReplaceThis"},
    {"SPLIT", 161, "CNodeSplit"},
    {"SPLIT2", 162, "CNodeSplit2"},
    {"FIND", 163, "CNodeFindChar"},
    {"FINDREVERSE", 164, "CNodeFindReverseChar"},
    {"TRIM", 166, "CNodeTrimChar"},
    {"TRIMLEFT", 167, "CNodeTrimLeftChar"},
    {"TRIMRIGHT", 168, "CNodeTrimRightChar"},
    {"MAKEUPPER", 169, "CNodeMakeUpperChar"},
    {"MAKELOWER", 170, "CNodeMakeLowerChar"},
    {"SUBSTR", 165, "CNodeSubString"},
    {"AND", 87, "CNodeAND"},
    {"OR", 88, "CNodeOR"},
    {"IIF", 108, "CNode_IIF"},
    {"IF", 109, "CNode_IF"},
    {"ELSE", 110, "CNode_ELSE"},
    {"NOT", 86, "CNodeNot"},
    {"WHILE", 111, "CNode_WHILE"},
    {"CATCH", 112, "CNode_Catch"},
    {"SETTEXT", 107, "CNode_SetText"},
    {"SETVALUE", 106, "CNode_SetValue"},
    {"ERROR", 7, "CNodeError"},
    {"WARNING", 8, "CNodeWarning"},
    {"MESSAGE", 8, "CNodeWarning"},
    {"#DEFINE", 700, "CNodeMacroDefine"},
    {"#UNDEF", 701, "CNodeMacroUnDefine"},
    {"#IF", 702, "CNodeMacroIf"},
    {"#IFDEF", 703, "CNodeMacroIfDef"},
    {"#IFNDEF", 704, "CNodeMacroIfNDef"},
    {"#ELIF", 705, "CNodeMacroElseIf"},
    {"#ELSE", 706, "CNodeMacroElse"},
    {"#ENDIF", 707, "CNodeMacroEndIf"},
    {"#ERROR", 709, "CNodeMacroError"},
    {"GETLASTERROR", 341, "CNodeGetError"},
    {"SCRIPTOPTION", 550, "CNodeScriptOption"},
    {"LOADSCRIPT", 570, "CNodeScriptLoad"},
    {"MESSAGEBOX", 557, "CNodeMessageBox"},
    {"DICTIONARY", 220, "CNodeNewDictionary"},
    {"DICT_SET", 221, "CNodeDictSet"},
    {"DICT_GET", 222, "CNodeDictGet"},
    {"DICTIONARYTOARRAY", 223, "CNodeConvertToArray"},
    {"GETFILES", 411, "CNodeGetFiles"},
    {"WAIT", 410, "CNodeWait"},
    {"PRINT", 202, "CNodePrint"},
    {"CLEAR", 203, "CNodeClear"},
    {"GETVERSION", 205, "CNode_GetVersion"},
    {"ISVERSIONGE", 206, "CNode_IsVersion_GE"},
    {"MATRIX", 430, "CNodeMatrix"},
    {"TRANSPOSE", 431, "CNodeMatrixTranspose"},
    {"EYE", 432, "CNodeMatrixEye"},
    {"ZEROS", 433, "CNodeMatrixZeros"},
    {"COFACTOR", 434, "CNodeMatrixCofactor"},
    {"ADJOINT", 435, "CNodeMatrixAdjoint"},
    {"ADJUGATE", 435, "CNodeMatrixAdjoint"},
    {"INVERSE", 436, "CNodeMatrixInverse"},
    {"DETERMINANT", 437, "CNodeMatrixDeterminant"},
    {"DCOFACTOR", 438, "CNodeMatrixCofactor_Dbl"},
    {"DADJOINT", 439, "CNodeMatrixAdjoint_Dbl"},
    {"DADJUGATE", 439, "CNodeMatrixAdjoint_Dbl"},
    {"DINVERSE", 440, "CNodeMatrixInverse_Dbl"},
    {"DDETERMINANT", 441, "CNodeMatrixDeterminant_Dbl"},
    {"EIGEN", 451, "CNodeCH_eigen"},
    {"EIGENVECTOR", 454, "CNodeCH_eigenVector"},
    {"INVERSECH", 452, "CNodeCH_inverse"},
    {"DETERMINANTCH", 453, "CNodeCH_determinant"},
    {"READTABLE", 481, "CNodeReadTable"},
    {"GETTABLEVALUE", 482, "CNodeGetTableValue"},
    {"XML_NEW", 750, "CNodeXML_ITEM"},
    {"XML_ADDNEW", 764, "CNodeXML_ITEM2"},
    {"XML_SETATTRIBUTE", 751, "CNodeXML_SetAttribute"},
    {"XML_GETATTRIBUTE", 752, "CNodeXML_GetAttribute"},
    {"XML_DELATTRIBUTE", 753, "CNodeXML_DelAttribute"},
    {"XML_GETALLATTRIBUTES", 754, "CNodeXML_GetAllAttributes"},
    {"XML_ADDCHILD", 755, "CNodeXML_AddChild"},
    {"XML_FINDCHILD", 756, "CNodeXML_FindChild"},
    {"XML_DELCHILD", 757, "CNodeXML_DelChild"},
    {"XML_GETALLCHILDREN", 758, "CNodeXML_GetAllChildren"},
    {"XML_GETNAME", 765, "CNodeXML_GetName"},
    {"XML_GETDATA", 759, "CNodeXML_GetData"},
    {"XML_SETDATA", 760, "CNodeXML_SetData"},
    {"XML_PARSE", 761, "CNodeXML_Parse"},
    {"GRAPH2D", 381, "CGraph2D"},
    {"GRAPH3D", 382, "CGraph3D"},
    {"GRAPH4D", 384, "CGraph4D"},
    {"LOOKUP_TABLE", 383, "CLookup_table"},
};

struct KeywordState
{
    std::once_flag built;
    bool isBuilt = false;
    std::vector<CRpnPrototypeProvider> providers;
    CRpnKeywordTable table;
    CRpnPrototypeArray prototypes;
};

KeywordState &state()
{
    // Lives to the end of the process: nodes made from it may outlive statics.
    static KeywordState *s = new KeywordState;
    return *s;
}

// Enters every name of the language whose class has a prototype.
void enterNames(KeywordState &s)
{
    for (const CRpnKeywordRow &row : kLanguageKeywords) {
        if (s.prototypes.GetAt(row.classNumber))
            s.table.Add(QString::fromLatin1(row.name), row.classNumber);
    }
}

} // namespace

const std::vector<CRpnKeywordRow> &GetLanguageKeywords()
{
    return kLanguageKeywords;
}

CRpnPrototypeArray::~CRpnPrototypeArray()
{
    for (CRpnNode *&node : m_nodes) {
        delete node;
        node = nullptr;
    }
}

void CRpnPrototypeArray::SetAt(int classNumber, CRpnNode *prototype)
{
    if (classNumber < 0 || classNumber >= Size) {
        delete prototype;
        return;
    }
    if (m_nodes[classNumber] != prototype)
        delete m_nodes[classNumber];
    m_nodes[classNumber] = prototype;
}

void AddPrototypeProvider(CRpnPrototypeProvider provider)
{
    KeywordState &s = state();
    s.providers.push_back(provider);
    if (s.isBuilt) {
        provider(s.prototypes);
        enterNames(s);
    }
}

void BuildKeywordTable()
{
    KeywordState &s = state();
    std::call_once(s.built, [&s] {
        for (CRpnPrototypeProvider provider : s.providers)
            provider(s.prototypes);
        enterNames(s);
        s.isBuilt = true;
    });
}

CRpnKeywordTable &GetKeywordTable()
{
    BuildKeywordTable();
    return state().table;
}

CRpnPrototypeArray &GetPrototypes()
{
    BuildKeywordTable();
    return state().prototypes;
}

CRpnNode *LookupKeyword(CEquationTree *tree, const QString &name, int position, int row, int col,
                        unsigned char &status, CRpnKeywordHook hook)
{
    BuildKeywordTable();
    KeywordState &s = state();
    if (CRpnNode *prototype = s.prototypes.GetAt(s.table.Lookup(name.toUpper())))
        return prototype->Clone(tree, position, row, col);
    if (hook)
        return hook(tree, name, position, row, col, status);
    return nullptr;
}
