#pragma once

#include <QComboBox>

// A combo box with the item calls of the older toolkit: insertItem(text, index) with the index
// last (-1 appends), setCurrentItem / currentItem. The QComboBox calls stay available.
class OXWComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit OXWComboBox(QWidget* parent = nullptr, const char* name = nullptr);

    using QComboBox::insertItem;
    // Inserts the text before index; -1 (or any index outside 0..count) appends.
    void insertItem(const QString& text, int index = -1);
    void setCurrentItem(int index) { setCurrentIndex(index); }
    int currentItem() const { return currentIndex(); }
};
