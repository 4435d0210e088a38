// The graph window's data file: the Save command writes the columns and held
// curves of the shown graph to a graph data file (.mrd), with its drawing
// objects.
#include "graphwnd/graphwnd.h"

#include "graphdata/draw/objectstore.h"
#include "graphdata/file/graphfilesave.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

namespace {

enum : int {
    TextSaveCaption = 14012,
    TextDataFileFilter = 43115,
};

} // namespace

bool CGraphWnd::SaveDataFile(QString path)
{
    if (!m_graphData)
        return false;
    if (path.isEmpty()) {
        CFilePrompt prompt;
        prompt.parent = this;
        prompt.save = true;
        prompt.caption = LanguageString(TextSaveCaption);
        prompt.filter = LanguageString(TextDataFileFilter);
        prompt.defaultSuffix = QStringLiteral("mrd");
        path = AskFileName(prompt);
        if (path.isEmpty())
            return false;
    }
    QString message;
    // The drawing objects go with the columns, as an attachment block.
    std::vector<QByteArray> attachments;
    if (!m_graphData->m_textObjects.IsEmpty())
        attachments.push_back(StoreObjects(m_graphData->m_textObjects));
    if (!SaveGraphData(path, m_graphData->m_data, &m_graphData->m_holds, &message, attachments)) {
        ShowMessage(this, message, PromptButtons::Ok, PromptIcon::Stop);
        return false;
    }
    return true;
}
