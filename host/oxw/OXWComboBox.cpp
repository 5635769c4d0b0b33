#include "OXWComboBox.h"

OXWComboBox::OXWComboBox(QWidget* parent, const char* name) : QComboBox(parent)
{
    if (name)
        setObjectName(QString::fromLatin1(name));
}

void OXWComboBox::insertItem(const QString& text, int index)
{
    if (index < 0 || index > count())
        index = count();
    QComboBox::insertItem(index, text);
}
