#include "graphwnd/textattributes.h"

#include "graphdata/draw/drawobjects.h"
#include "graphdata/pages/optionspage.h"
#include "support/languagestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum : int {
    TextTitle = 44100,
    TextText = 44101,
    TextFont = 44102,
    TextSize = 44103,
    TextBold = 44104,
    TextItalic = 44105,
    TextColor = 44106,
    TextPlacement = 44107,
    TextCentred = 44108, // 44108 to 44111: placements 0 to 3
    TextVertical = 44112,
    TextEmpty = 44113,
};

// Weights from 600 up are drawn bold.
constexpr int kBoldWeight = 700;
constexpr int kNormalWeight = 400;

} // namespace

CTextAttributes::CTextAttributes(QWidget *parent)
    : QDialog(parent),
      m_text(new QLineEdit(this)),
      m_face(new QFontComboBox(this)),
      m_size(new QSpinBox(this)),
      m_bold(new QCheckBox(LanguageString(TextBold), this)),
      m_italic(new QCheckBox(LanguageString(TextItalic), this)),
      m_color(new CColorField(this)),
      m_placement(new QComboBox(this)),
      m_vertical(new QCheckBox(LanguageString(TextVertical), this)),
      m_preview(new QLabel(this)),
      m_error(new QLabel(this))
{
    setWindowTitle(LanguageString(TextTitle));
    m_size->setRange(1, 400);
    for (int placement = 0; placement < 4; ++placement)
        m_placement->addItem(LanguageString(TextCentred + placement), placement);
    m_preview->setMinimumHeight(60);
    m_preview->setAlignment(Qt::AlignCenter);
    m_preview->setFrameShape(QFrame::StyledPanel);
    m_preview->setAutoFillBackground(true);
    QPalette white = m_preview->palette();
    white.setColor(QPalette::Window, Qt::white);
    m_preview->setPalette(white);
    m_error->setStyleSheet(QStringLiteral("color: #C00000"));
    m_error->setWordWrap(true);
    m_error->hide();

    auto *styles = new QHBoxLayout;
    styles->addWidget(m_size);
    styles->addWidget(m_bold);
    styles->addWidget(m_italic);
    styles->addStretch(1);
    auto *form = new QFormLayout;
    form->addRow(LanguageString(TextText), m_text);
    form->addRow(LanguageString(TextFont), m_face);
    form->addRow(LanguageString(TextSize), styles);
    form->addRow(LanguageString(TextColor), m_color);
    form->addRow(LanguageString(TextPlacement), m_placement);
    form->addRow(QString(), m_vertical);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &CTextAttributes::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CTextAttributes::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_preview);
    layout->addWidget(m_error);
    layout->addWidget(buttons);

    connect(m_text, &QLineEdit::textChanged, this, &CTextAttributes::updatePreview);
    connect(m_face, &QFontComboBox::currentFontChanged, this, &CTextAttributes::updatePreview);
    connect(m_size, &QSpinBox::valueChanged, this, &CTextAttributes::updatePreview);
    connect(m_bold, &QCheckBox::toggled, this, &CTextAttributes::updatePreview);
    connect(m_italic, &QCheckBox::toggled, this, &CTextAttributes::updatePreview);
    connect(m_color->Edit(), &QLineEdit::textChanged, this, &CTextAttributes::updatePreview);
}

void CTextAttributes::Load(const CDrawText &text)
{
    m_text->setText(text.m_text);
    // A face this machine lacks is still shown and kept.
    m_face->setCurrentFont(QFont(text.m_face));
    m_face->setEditText(text.m_face);
    m_size->setValue(std::clamp(text.m_fontHeight, m_size->minimum(), m_size->maximum()));
    m_weight = text.m_fontWeight;
    m_bold->setChecked(text.m_fontWeight >= 600);
    m_italic->setChecked(text.m_italic != 0);
    m_colorValue = text.m_color;
    m_color->SetColor(text.m_color);
    m_placement->setCurrentIndex(std::clamp(int(text.m_alignment), 0, 3));
    m_vertical->setChecked(text.m_vertical != 0);
    updatePreview();
}

void CTextAttributes::Store(CDrawText &text) const
{
    text.m_text = m_text->text();
    const QString face = m_face->currentText().trimmed();
    if (!face.isEmpty())
        text.m_face = face;
    text.m_fontHeight = m_size->value();
    if (m_bold->isChecked() != (m_weight >= 600))
        text.m_fontWeight = m_bold->isChecked() ? kBoldWeight : kNormalWeight;
    else
        text.m_fontWeight = m_weight;
    text.m_italic = m_italic->isChecked() ? 1 : 0;
    text.m_color = m_colorValue;
    text.m_alignment = m_placement->currentData().toInt();
    text.m_vertical = m_vertical->isChecked() ? 1 : 0;
}

void CTextAttributes::accept()
{
    std::uint32_t color = 0;
    QString fault;
    QWidget *field = nullptr;
    if (m_text->text().isEmpty()) {
        fault = LanguageString(TextEmpty);
        field = m_text;
    } else if (!m_color->GetColor(color)) {
        fault = BadColorText(m_color->Edit()->text());
        field = m_color->Edit();
    }
    if (field) {
        m_error->setText(fault);
        m_error->show();
        field->setFocus();
        if (auto *edit = qobject_cast<QLineEdit *>(field))
            edit->selectAll();
        return;
    }
    m_colorValue = color;
    QDialog::accept();
}

void CTextAttributes::updatePreview()
{
    QFont font(m_face->currentText());
    font.setPointSize(m_size->value());
    font.setBold(m_bold->isChecked());
    font.setItalic(m_italic->isChecked());
    m_preview->setFont(font);
    m_preview->setText(m_text->text());
    std::uint32_t color = 0;
    if (m_color->GetColor(color)) {
        QPalette palette = m_preview->palette();
        palette.setColor(QPalette::WindowText,
                         QColor(int(color & 0xFF), int((color >> 8) & 0xFF), int((color >> 16) & 0xFF)));
        m_preview->setPalette(palette);
    }
}
