#pragma once
// XML elements in scripts: XML_New and XML_AddNew build them, the other
// XML_ functions read and change attributes, children and data, XML_Parse
// reads a text.  An XML value shares its element; the element counts its
// holders.  Texts that nest deeper than RpnMaxXmlDepth elements are refused
// by XML_Parse, so that no later walk over the tree runs out of stack.

#include "functions/rpnfunctionbase.h"

inline constexpr int RpnMaxXmlDepth = 10000;

#define TARN_XML_NODE(Class, Kind, Name)                                                                         \
    class Class : public CNodeScriptFunction                                                                     \
    {                                                                                                            \
    public:                                                                                                      \
        int GetKind() const override { return Kind; }                                                            \
        QString GetName() const override { return QStringLiteral(Name); }                                        \
        CRpnNode *CreateSame() const override { return new Class; }                                              \
        int DoFunction(CRpnData &result, QString &errorText) override;                                           \
    };

TARN_XML_NODE(CNodeXML_ITEM, 750, "XML_New")
TARN_XML_NODE(CNodeXML_SetAttribute, 751, "XML_SetAttribute")
TARN_XML_NODE(CNodeXML_GetAttribute, 752, "XML_GetAttribute")
TARN_XML_NODE(CNodeXML_DelAttribute, 753, "XML_DelAttribute")
TARN_XML_NODE(CNodeXML_GetAllAttributes, 754, "XML_GetAllAttributes")
TARN_XML_NODE(CNodeXML_AddChild, 755, "XML_AddChild")
TARN_XML_NODE(CNodeXML_FindChild, 756, "XML_FindChild")
TARN_XML_NODE(CNodeXML_DelChild, 757, "XML_DelChild")
TARN_XML_NODE(CNodeXML_GetAllChildren, 758, "XML_GetAllChildren")
TARN_XML_NODE(CNodeXML_GetData, 759, "XML_GetData")
TARN_XML_NODE(CNodeXML_SetData, 760, "XML_SetData")
TARN_XML_NODE(CNodeXML_Parse, 761, "XML_Parse")
TARN_XML_NODE(CNodeXML_ITEM2, 764, "XML_AddNew")
TARN_XML_NODE(CNodeXML_GetName, 765, "XML_GetName")
#undef TARN_XML_NODE

class CRpnPrototypeArray;
void ProvideXmlFunctions(CRpnPrototypeArray &prototypes);
