#include "OXWPresetComboBox.h"

#include "OXWPresetHandler.h"

#include <OXMenum.h>

OXWPresetComboBox::OXWPresetComboBox(QWidget* parent, const char* name, const char* presetType)
    : QComboBox(parent), mPresetType(presetType ? QString::fromLatin1(presetType) : QString())
{
    if (name)
        setObjectName(QString::fromLatin1(name));
}

OXWPresetComboBox::~OXWPresetComboBox() = default;

OXWPresetHandler* OXWPresetComboBox::presetHandler() const
{
    if (mHandlerID.isEmpty())
        return nullptr;
    const QByteArray name = mHandlerID.toLatin1();
    return OXWPresetHandler::getPresetHandler(OXMenum::find(name.constData()));
}
