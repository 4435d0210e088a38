#include "graphdata/pages/optionspage.h"

#include "support/languagestring.h"

#include <QColor>
#include <QColorDialog>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QLocale>
#include <QPixmap>
#include <QToolButton>

#include <cmath>

namespace {

enum : int {
    TextNotANumber = 43813,
    TextNotAColor = 43815,
    TextChooseColor = 43865,
};

QColor toQColor(std::uint32_t c) { return QColor(int(c & 0xFF), int((c >> 8) & 0xFF), int((c >> 16) & 0xFF)); }

std::uint32_t fromQColor(const QColor &c)
{
    return std::uint32_t(c.red()) | (std::uint32_t(c.green()) << 8) | (std::uint32_t(c.blue()) << 16);
}

} // namespace

COptionsPage::COptionsPage(CGraphOptionsCopy &copy, QWidget *parent) : QWidget(parent), m_copy(copy) {}

CColorField::CColorField(QWidget *parent) : QWidget(parent), m_edit(new QLineEdit(this)), m_swatch(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_swatch);
    m_edit->setMaxLength(32);
    m_swatch->setToolTip(LanguageString(TextChooseColor));
    m_swatch->setFocusPolicy(Qt::TabFocus);
    setFocusProxy(m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, [this] {
        showSwatch();
        emit Changed();
    });
    connect(m_swatch, &QToolButton::clicked, this, [this] {
        std::uint32_t now = 0;
        GetColor(now);
        const QColor chosen = QColorDialog::getColor(toQColor(now), this);
        if (chosen.isValid())
            SetColor(fromQColor(chosen));
    });
}

void CColorField::SetColor(std::uint32_t color)
{
    m_edit->setText(toQColor(color).name().toUpper());
}

bool CColorField::GetColor(std::uint32_t &color) const
{
    const QColor c = QColor::fromString(m_edit->text().trimmed());
    if (!c.isValid())
        return false;
    color = fromQColor(c);
    return true;
}

void CColorField::showSwatch()
{
    std::uint32_t color = 0;
    const int side = m_swatch->fontMetrics().height();
    QPixmap pixmap(side, side);
    if (GetColor(color))
        pixmap.fill(toQColor(color));
    else
        pixmap.fill(Qt::transparent);
    m_swatch->setIcon(QIcon(pixmap));
}

bool ReadNumberField(const QLineEdit *edit, double &value, QString &error)
{
    bool ok = false;
    const QString text = edit->text().trimmed();
    const double v = QLocale::c().toDouble(text, &ok);
    if (!ok || !std::isfinite(v)) {
        error = LanguageString(TextNotANumber).arg(text);
        return false;
    }
    value = v;
    return true;
}

QString BadColorText(const QString &typed) { return LanguageString(TextNotAColor).arg(typed.trimmed()); }

void FocusField(QLineEdit *edit)
{
    if (!edit)
        return;
    edit->setFocus(Qt::OtherFocusReason);
    edit->selectAll();
}
