#pragma once

#include <QStringList>
#include <QWidget>

class QPlainTextEdit;

// The viewer's log: a read-only list of time-stamped messages. It shows every message of the
// host's error channel (it installs an OXMError handler for its lifetime) and whatever else
// is appended (the plug-in loader's progress messages). Errors reported from another thread
// are queued to the pane's thread.
//
// Lines look like "12:34:56.789  error  OXM::GenericError: text" and
// "12:34:56.789  info   text". At most MaximumLines lines are kept; the oldest go first.
class OXWLogPane : public QWidget
{
    Q_OBJECT
public:
    static constexpr int MaximumLines = 10000;

    explicit OXWLogPane(QWidget* parent = nullptr);
    ~OXWLogPane() override;
    OXWLogPane(const OXWLogPane&) = delete;
    OXWLogPane& operator=(const OXWLogPane&) = delete;

    // The lines shown, oldest first.
    QStringList lines() const;
    int lineCount() const;
    QPlainTextEdit* textView() const { return mText; }
    // About four lines: the log stays small beside the views.
    QSize sizeHint() const override;

public slots:
    void appendMessage(const QString& text);
    void appendError(const QString& text);
    void clear();

private:
    void appendLine(const QString& kind, const QString& text);

    QPlainTextEdit* mText;
    int mHandlerId = 0;
};
