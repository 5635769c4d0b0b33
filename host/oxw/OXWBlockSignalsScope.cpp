#include "OXWBlockSignalsScope.h"

OXWBlockSignalsScope::OXWBlockSignalsScope(QObject* object) : mObject(object)
{
    if (object)
        mPrevious = object->blockSignals(true);
}

OXWBlockSignalsScope::~OXWBlockSignalsScope()
{
    if (mObject)
        mObject->blockSignals(mPrevious);
}
