#include "OXWPressUserAction.h"

#include "OXWApplication.h"

#include <OXMSingleton.h>

void OXWPressUserAction::press(const QString& name)
{
    release();
    if (OXWApplication* app = OXMSingleton<OXWApplication>::getInstance())
        mId = app->userActionBegin(name);
}

void OXWPressUserAction::release()
{
    if (mId > 0) {
        if (OXWApplication* app = OXMSingleton<OXWApplication>::getInstance())
            app->userActionEnd(mId, QString());
    }
    mId = -1;
}
