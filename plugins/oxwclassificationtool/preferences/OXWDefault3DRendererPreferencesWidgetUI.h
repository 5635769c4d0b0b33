#pragma once

#include <QWidget>

class OXWComboBox;
class QCheckBox;
class QEvent;
class QGridLayout;
class QLabel;

// The form of the "Default 3D rendering" preference page: a combo box of renderers and a check
// box for the shadow of the side light, in a two-column grid.
class OXWDefault3DRendererPreferencesWidgetUI : public QWidget
{
    Q_OBJECT
public:
    explicit OXWDefault3DRendererPreferencesWidgetUI(QWidget* parent = nullptr,
                                                     const char* name = nullptr,
                                                     Qt::WindowFlags flags = Qt::WindowFlags());
    ~OXWDefault3DRendererPreferencesWidgetUI() override;

    QLabel* textLabel1_3_2;
    OXWComboBox* mDefault3DRendererComboBox;
    QLabel* textLabel3;
    QCheckBox* mSecondLightShadowCheckBox;

public slots:
    // Sets the texts again (after a change of language) and resizes the form.
    virtual void languageChange();

protected:
    void changeEvent(QEvent* event) override;

    QGridLayout* OXWDefault3DRendererPreferencesWidgetUILayout;
};
