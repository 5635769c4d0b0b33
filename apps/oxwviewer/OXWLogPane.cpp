#include "OXWLogPane.h"

#include <OXMError.h>

#include <QMetaObject>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextBlock>
#include <QTextDocument>
#include <QThread>
#include <QTime>
#include <QVBoxLayout>

QSize OXWLogPane::sizeHint() const
{
    return QSize(600, 4 * fontMetrics().lineSpacing() + 12);
}

OXWLogPane::OXWLogPane(QWidget* parent) : QWidget(parent), mText(new QPlainTextEdit(this))
{
    setObjectName(QStringLiteral("OXWLogPane"));
    setWindowTitle(tr("Log"));
    mText->setObjectName(QStringLiteral("mText"));
    mText->setReadOnly(true);
    mText->setLineWrapMode(QPlainTextEdit::NoWrap);
    mText->setMaximumBlockCount(MaximumLines);
    mText->setPlaceholderText(tr("No messages"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(mText);

    QPointer<OXWLogPane> self(this);
    mHandlerId = OXMError::addHandler([self](const OXMError::Message& message) {
        if (!self)
            return;
        const QString text = message.toString();
        if (QThread::currentThread() == self->thread()) {
            self->appendError(text);
        } else {
            QMetaObject::invokeMethod(
                self.data(),
                [self, text] {
                    if (self)
                        self->appendError(text);
                },
                Qt::QueuedConnection);
        }
    });
}

OXWLogPane::~OXWLogPane()
{
    OXMError::removeHandler(mHandlerId);
}

QStringList OXWLogPane::lines() const
{
    QStringList list;
    const QTextDocument* doc = mText->document();
    if (doc->isEmpty())
        return list;
    for (QTextBlock b = doc->begin(); b.isValid(); b = b.next())
        list << b.text();
    return list;
}

int OXWLogPane::lineCount() const
{
    return mText->document()->isEmpty() ? 0 : mText->document()->blockCount();
}

void OXWLogPane::appendMessage(const QString& text)
{
    appendLine(QStringLiteral("info "), text);
}

void OXWLogPane::appendError(const QString& text)
{
    appendLine(QStringLiteral("error"), text);
}

void OXWLogPane::clear()
{
    mText->clear();
}

void OXWLogPane::appendLine(const QString& kind, const QString& text)
{
    const QString stamp = QTime::currentTime().toString(QStringLiteral("hh:mm:ss.zzz"));
    mText->appendPlainText(stamp + QStringLiteral("  ") + kind + QStringLiteral("  ") + text);
}
