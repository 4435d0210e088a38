#include "graphdata/pages/options2dlg.h"

#include "graphdata/graphcurve.h"
#include "graphdata/graphglobaldata.h"
#include "graphdata/pages/curve2page.h"
#include "graphdata/pages/display2page.h"
#include "graphdata/pages/screen2page.h"
#include "graphdata/pages/useremipage.h"
#include "graphdata/pages/xaxis2page.h"
#include "graphdata/pages/yaxis2page.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "support/registry.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

enum : int {
    TextTitle = 43800,
    TextCurves = 43801,
    TextXAxis = 43803,
    TextYAxes = 43804,
    TextScreen = 43805,
    TextDisplay = 43870,
    TextUserEmi = 43885,
    TextSaveAsDefault = 44604,
    TextSavedAsDefault = 44605,
};

const char kKey[] = "Options2";

} // namespace

COptions2_Dlg::COptions2_Dlg(CGraphCurve &graph, int startPage, QWidget *parent)
    : QDialog(parent), m_graph(graph), m_tabs(new QTabWidget(this))
{
    setWindowTitle(LanguageString(TextTitle));
    m_copy.Take(graph);
    m_curvePage = new CCurve_2_Page(m_copy);
    m_xPage = new CXAxis_2_Page(m_copy);
    m_yPage = new CYAxis_2_Page(m_copy);
    m_screenPage = new CScreen_2_Page(m_copy);
    m_displayPage = new CDisplay_2_Page(m_copy);
    m_displayPage->m_formulaCheck = [this](const QString &formula) { return FormulaCompileError(m_graph, formula); };
    m_emiPage = new CUserEMI(m_copy);
    m_tabs->addTab(m_curvePage, LanguageString(TextCurves));
    m_tabs->addTab(m_displayPage, LanguageString(TextDisplay));
    m_tabs->addTab(m_xPage, LanguageString(TextXAxis));
    m_tabs->addTab(m_yPage, LanguageString(TextYAxes));
    m_tabs->addTab(m_screenPage, LanguageString(TextScreen));
    m_tabs->addTab(m_emiPage, LanguageString(TextUserEmi));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &COptions2_Dlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &COptions2_Dlg::reject);
    QPushButton *asDefault = buttons->addButton(LanguageString(TextSaveAsDefault), QDialogButtonBox::ResetRole);
    asDefault->setObjectName(QStringLiteral("saveAsDefault"));
    connect(asDefault, &QPushButton::clicked, this, [this] { SaveAsDefault(); });

    const QString key = QString::fromLatin1(kKey);
    const int width = int(RegistryGetDword(key, QStringLiteral("Width"), 0));
    const int height = int(RegistryGetDword(key, QStringLiteral("Height"), 0));
    if (width > 100 && height > 100)
        resize(width, height);
    else
        resize(760, 480);
    int page = startPage >= 0 ? m_tabs->indexOf(Page(COptionsFault::Page(startPage))) : -1;
    if (!pageAt(page))
        page = int(RegistryGetDword(key, QStringLiteral("Page"), 0));
    if (!pageAt(page))
        page = 0;
    for (int i = 0; i < m_tabs->count(); ++i)
        static_cast<COptionsPage *>(m_tabs->widget(i))->Load();
    m_tabs->setCurrentIndex(page);
    m_shown = page;
    connect(m_tabs, &QTabWidget::currentChanged, this, &COptions2_Dlg::pageChanging);
}

COptions2_Dlg::~COptions2_Dlg() = default;

COptionsPage *COptions2_Dlg::pageAt(int index) const
{
    return index >= 0 && index < m_tabs->count() ? static_cast<COptionsPage *>(m_tabs->widget(index)) : nullptr;
}

COptionsPage *COptions2_Dlg::Page(COptionsFault::Page page) const
{
    switch (page) {
    case COptionsFault::PageCurves: return m_curvePage;
    case COptionsFault::PageXAxis: return m_xPage;
    case COptionsFault::PageYAxis: return m_yPage;
    case COptionsFault::PageScreen: return m_screenPage;
    case COptionsFault::PageDisplay: return m_displayPage;
    case COptionsFault::PageEmi: return m_emiPage;
    default: return nullptr;
    }
}

void COptions2_Dlg::pageChanging(int index)
{
    // The page left writes its fields into the copies, and the page
    // entered shows them (a curve may have added an axis).
    COptionsPage *left = pageAt(m_shown);
    COptionsFault fault;
    if (left && !left->Store(fault)) {
        const QSignalBlocker block(m_tabs);
        m_tabs->setCurrentIndex(m_shown);
        showFault(fault);
        return;
    }
    m_shown = index;
    if (COptionsPage *entered = pageAt(index))
        entered->Load();
}

void COptions2_Dlg::showFault(const COptionsFault &fault)
{
    COptionsPage *page = Page(fault.page);
    if (page && m_tabs->indexOf(page) >= 0) {
        const QSignalBlocker block(m_tabs);
        m_tabs->setCurrentWidget(page);
        m_shown = m_tabs->currentIndex();
    }
    ShowMessage(this, fault.text);
    if (page)
        page->Focus(fault);
}

void COptions2_Dlg::accept()
{
    // Only the page shown holds edits the copies lack: every other one
    // stored its fields when it was left.  Storing those again would write
    // back what they showed then, over what later pages changed (the curve
    // and display pages both edit the curve list).
    COptionsFault fault;
    COptionsPage *current = pageAt(m_shown);
    if (current && !current->Store(fault)) {
        showFault(fault);
        return;
    }
    if (!m_copy.Check(fault)) {
        if (COptionsPage *page = Page(fault.page))
            page->Load();
        showFault(fault);
        return;
    }
    // New formulas compile before anything is written, so that one that
    // does not leaves the graph as it was.
    if (!CheckNewFormulas(m_graph, m_copy, fault)) {
        showFault(fault);
        return;
    }
    m_copy.Apply(m_graph, m_notFound);
    QDialog::accept();
}

bool COptions2_Dlg::SaveAsDefault()
{
    COptionsFault fault;
    COptionsPage *current = pageAt(m_shown);
    if (current && !current->Store(fault)) {
        showFault(fault);
        return false;
    }
    if (!m_copy.Check(fault)) {
        if (COptionsPage *page = Page(fault.page))
            page->Load();
        showFault(fault);
        return false;
    }
    CGraphGlobalData &defaults = GetGraphGlobalData();
    defaults.TakeFrom(m_copy);
    defaults.Save();
    ShowMessage(this, LanguageString(TextSavedAsDefault));
    return true;
}

void COptions2_Dlg::done(int result)
{
    const QString key = QString::fromLatin1(kKey);
    RegistrySetDword(key, QStringLiteral("Width"), std::uint32_t(width()));
    RegistrySetDword(key, QStringLiteral("Height"), std::uint32_t(height()));
    RegistrySetDword(key, QStringLiteral("Page"), std::uint32_t(std::max(0, m_tabs->currentIndex())));
    QDialog::done(result);
}
