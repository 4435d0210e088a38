#include "graphviewpicture.h"

#include "support/languagestring.h"

#include <QEvent>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPixmap>
#include <QPointer>
#include <QSaveFile>
#include <QTimer>
#include <QWidget>

namespace {

enum : int {
    TextCannotSave = 43636,
    TextCannotMake = 43637,
};

// Waits for a paint event of its widget; once that paint is over, calls
// its function and goes away.
class CPaintWatcher : public QObject
{
public:
    CPaintWatcher(QWidget *widget, std::function<void()> done) : QObject(widget), m_done(std::move(done))
    {
        widget->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_fired) {
            m_fired = true;
            watched->removeEventFilter(this);
            // Queued: runs when the paint being delivered is complete.
            QTimer::singleShot(0, this, [this] {
                m_done();
                deleteLater();
            });
        }
        return false;
    }

private:
    std::function<void()> m_done;
    bool m_fired = false;
};

} // namespace

void AfterNextPaint(QWidget *widget, std::function<void()> done)
{
    new CPaintWatcher(widget, std::move(done));
    widget->update();
}

bool SaveWidgetPicture(QWidget &widget, const QString &path, QString &error)
{
    QByteArray format = QFileInfo(path).suffix().toLower().toLatin1();
    if (!QImageWriter::supportedImageFormats().contains(format))
        format = "png";
    const QImage image = widget.grab().toImage();
    if (image.isNull()) {
        error = LanguageString(TextCannotMake).arg(widget.width()).arg(widget.height());
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        error = LanguageString(TextCannotSave).arg(path, file.errorString());
        return false;
    }
    QImageWriter writer(&file, format);
    if (!writer.write(image)) {
        const QString reason = file.error() != QFileDevice::NoError ? file.errorString() : writer.errorString();
        file.cancelWriting();
        error = LanguageString(TextCannotSave).arg(path, reason);
        return false;
    }
    if (!file.commit()) {
        error = LanguageString(TextCannotSave).arg(path, file.errorString());
        return false;
    }
    return true;
}
