#pragma once

// Answers the modal dialogs that the code under test opens, one answer each time a dialog
// becomes the active one, in order (a dialog opened from inside another one included, and the
// outer one again when it stays open after that). An answer is a function of the dialog. A dialog
// for which no answer is left is rejected and counted in unexpected. Message boxes' texts are
// recorded.

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>

class OXWModalAnswers : public QObject
{
public:
    using Answer = std::function<void(QWidget*)>;

    explicit OXWModalAnswers(std::initializer_list<Answer> answers) : mAnswers(answers)
    {
        connect(&mTimer, &QTimer::timeout, this, [this] { answer(); });
        mTimer.start(5);
    }

    // Clicks a button of a message box.
    static Answer button(QMessageBox::StandardButton which)
    {
        return [which](QWidget* w) { qobject_cast<QMessageBox*>(w)->button(which)->click(); };
    }
    // Types the text into the dialog's line edit named edit and accepts the dialog.
    static Answer type(const QString& text, const char* edit = "mNameEdit")
    {
        return [text, edit](QWidget* w) {
            if (auto* line = w->findChild<QLineEdit*>(QString::fromLatin1(edit)))
                line->setText(text);
            if (auto* dialog = qobject_cast<QDialog*>(w))
                QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
        };
    }

    std::size_t pending() const { return mAnswers.size(); }
    QStringList texts;
    int unexpected = 0;

private:
    void answer()
    {
        // A dialog is answered each time it becomes the active one: again when a message box
        // it opened has closed and it stays open.
        QWidget* w = QApplication::activeModalWidget();
        if (!w || w == mLast)
            return;
        mLast = w;
        if (auto* box = qobject_cast<QMessageBox*>(w))
            texts << box->text();
        if (mAnswers.empty()) {
            ++unexpected;
            if (auto* dialog = qobject_cast<QDialog*>(w))
                dialog->reject();
            return;
        }
        const Answer next = mAnswers.front();
        mAnswers.pop_front();
        next(w);
    }

    std::deque<Answer> mAnswers;
    QPointer<QWidget> mLast;
    QTimer mTimer;
};
