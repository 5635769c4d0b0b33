#include "OXWDefault3DRendererPreferencesWidgetUI.h"

#include <OXWComboBox.h>

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>

OXWDefault3DRendererPreferencesWidgetUI::OXWDefault3DRendererPreferencesWidgetUI(
    QWidget* parent, const char* name, Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setObjectName(QString::fromUtf8(name ? name : "OXWDefault3DRendererPreferencesWidgetUI"));
    OXWDefault3DRendererPreferencesWidgetUILayout = new QGridLayout(this);
    OXWDefault3DRendererPreferencesWidgetUILayout->setObjectName(
        QStringLiteral("OXWDefault3DRendererPreferencesWidgetUILayout"));
    OXWDefault3DRendererPreferencesWidgetUILayout->setContentsMargins(0, 0, 0, 0);
    OXWDefault3DRendererPreferencesWidgetUILayout->setSpacing(4);

    textLabel1_3_2 = new QLabel(this);
    textLabel1_3_2->setObjectName(QStringLiteral("textLabel1_3_2"));
    OXWDefault3DRendererPreferencesWidgetUILayout->addWidget(textLabel1_3_2, 0, 0);
    mDefault3DRendererComboBox = new OXWComboBox(this, "mDefault3DRendererComboBox");
    mDefault3DRendererComboBox->setMinimumWidth(50);
    OXWDefault3DRendererPreferencesWidgetUILayout->addWidget(mDefault3DRendererComboBox, 0, 1);
    textLabel3 = new QLabel(this);
    textLabel3->setObjectName(QStringLiteral("textLabel3"));
    OXWDefault3DRendererPreferencesWidgetUILayout->addWidget(textLabel3, 1, 0);
    mSecondLightShadowCheckBox = new QCheckBox(this);
    mSecondLightShadowCheckBox->setObjectName(QStringLiteral("mSecondLightShadowCheckBox"));
    OXWDefault3DRendererPreferencesWidgetUILayout->addWidget(mSecondLightShadowCheckBox, 1, 1);
    languageChange();
}

OXWDefault3DRendererPreferencesWidgetUI::~OXWDefault3DRendererPreferencesWidgetUI() = default;

void OXWDefault3DRendererPreferencesWidgetUI::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        languageChange();
    QWidget::changeEvent(event);
}

void OXWDefault3DRendererPreferencesWidgetUI::languageChange()
{
    setWindowTitle(tr("OXWDefault3DRendererPreferencesWidgetUI"));
    textLabel1_3_2->setText(tr("Default 3D renderer"));
    textLabel3->setText(tr("Shadow on side light source"));
    resize(QSize(193, 42).expandedTo(minimumSizeHint()));
}
