#pragma once

// A preset handler of a simple kind for the tests of the host's preset machinery: the target
// and the records are PresetTestRecord objects with one value, OXM::Scale. There is one
// built-in preset, "Ramp" (scale 0.5); the save dialog extension is a check box; a change of
// the target's scale marks the current preset modified. Another viewer's preset becomes a
// record whose scale is its number of colour points.

#include <OXMClassFactory.h>
#include <OXMMetaClass.h>
#include <OXMObjectIOCPtr.h>
#include <OXMRegisteredEnum.h>
#include <OXMSingleValueOP.h>
#include <OXWPresetDefaultHandler.h>

#include <QCheckBox>

class PresetTestRecord : public OXMObject
{
public:
    PresetTestRecord() { addProperty(OXM::Scale, new OXMSingleValueOP<float>(1.0f), true); }
    static const OXMMetaClass* metaClass()
    {
        static OXMDefaultClassFactory<PresetTestRecord> factory;
        static OXMMetaClass meta("PresetTestRecord", sizeof(PresetTestRecord),
                                 OXMObject::metaClass(), &factory, "oxwpresettests");
        return &meta;
    }
    const OXMMetaClass* getMetaClass() const override { return metaClass(); }
    float scale() const
    {
        float v = 0.0f;
        getValue(OXM::Scale, v);
        return v;
    }
};

class PresetTestHandler : public OXWPresetDefaultHandler
{
public:
    PresetTestHandler() : OXWPresetDefaultHandler(id(), QStringLiteral("Test"))
    {
        PresetTestRecord::metaClass();
        mTarget.setListener(this);
    }
    static OXMenum id()
    {
        static const OXMRegisteredEnum registration("PresetTestHandler", false, "oxwpresettests");
        return registration;
    }

    bool getPresetList(QStringList& list, OXMenum type) const override
    {
        if (type != OXM::DefaultPreset)
            return OXWPresetDefaultHandler::getPresetList(list, type);
        list = QStringList{QStringLiteral("Ramp")};
        return true;
    }
    bool saveTargetAsPreset(const QString& name, OXMenum type) override
    {
        OXMObjectPtr record(new PresetTestRecord);
        return record->copyProperty(getTargetObject(), OXM::Scale) &&
               savePreset(record.get(), name, type);
    }
    bool applyPresetToTarget(const QString& name, OXMenum type) override
    {
        OXMObject* target = getTargetObject();
        if (type == OXM::DefaultPreset)
            return target && name == QLatin1String("Ramp") && target->setValue(OXM::Scale, 0.5f);
        const OXMObjectPtr record = loadPreset(name, type, 0);
        return target && record && target->copyProperty(record.get(), OXM::Scale);
    }
    // Presets of other viewers: the scale is the number of colour points.
    OXMObjectPtr recordFromTransferFunction(const OXWTransferFunction& preset) const override
    {
        OXMObjectPtr record(new PresetTestRecord);
        record->setValue(OXM::Scale, float(preset.colours.size()));
        return record;
    }
    QWidget* createSaveDialogExtension() override { return new QCheckBox(QStringLiteral("Extra")); }
    bool setTargetObject(OXMObject* target) override
    {
        mTarget = target;
        return OXWPresetDefaultHandler::setTargetObject(target);
    }
    void iocCallback(OXMIOC::Message& message) override
    {
        if (message.getInitialSender() == mTarget.get() && message.getPropertyID() == OXM::Scale)
            setCurrentPresetModified(true);
        OXWPresetDefaultHandler::iocCallback(message);
    }

private:
    OXMObjectIOCPtr mTarget;
};
