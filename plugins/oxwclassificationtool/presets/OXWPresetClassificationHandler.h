#pragma once

#include "OXMPresetClassificationProxyObject.h"
#include "OXWPresetConversion.h"

#include <OXMObjectIOCPtr.h>
#include <OXMVector2.h>
#include <OXWPresetDefaultHandler.h>

#include <QStringList>

#include <array>
#include <vector>

// The classification presets of the host's preset system, registered as
// "PresetClassificationHandler" (namespace "oxwclassificationtool"); the plug-in makes one.
//
// The tool panel tells it which render object is selected (setTargetObject) and which histogram
// belongs to it (setHistogramObject). From the target it finds the volume (the target, or the
// volume of a target region), the region, the volume's render plug-in, the object that holds
// the render settings (the camera's "OXMOxm2RenderSettings" for the camera ray tracer, else the
// region or the volume) and the material with its sixteen channel objects.
//
// Saving copies the material's interval lists and channels, the rendering method and the render
// settings into an OXMPresetClassificationProxyObject (with the absolute flag) and stores it as
// a user preset; references between the material's channels become references between the
// record's. Applying loads the record, converts it onto the grey-value range of the histogram
// (OXWPresetConversion, checked completely before anything is written: a record that does not
// convert leaves the target untouched), then writes the render plug-in (made anew when its
// class differs), the render settings, the interval lists and the channels, under the host's
// message locks, and makes the absolute flag that of the preset. A failed write does not stop
// the others; it only makes the result false (a preset whose render plug-in class can't be
// made is applied with the current plug-in). Without a volume the render steps are skipped.
//
// Built-in presets (OXM::DefaultPreset): "Ramp", "Inverse Ramp", "Components" and "Isosurface
// Transparent", computed from the histogram's range. Their intervals are written switched on
// as OXM::Enabled and off as OXM::Disabled, the values the tool panel and the renderer read, so
// that an interval a built-in preset means to show is enabled in the editor after it is
// applied.
//
// Change listening: a change of a property that presets hold (OXMProperty::PresetFlag) of the
// material, a channel, the volume, the region, the render plug-in or the settings holder marks
// the current preset modified.
class OXWPresetClassificationHandler : public OXWPresetDefaultHandler
{
public:
    static constexpr int ChannelCount = OXMPresetClassificationProxyObject::ChannelCount;

    explicit OXWPresetClassificationHandler(OXMObject* target = nullptr);
    ~OXWPresetClassificationHandler() override;

    // OXM::DefaultPreset: the four built-in names, translated when the library was loaded.
    bool getPresetList(QStringList& list, OXMenum type) const override;
    QString presetCategoryText() const override;
    bool applyPresetToTarget(const QString& name, OXMenum type) override;
    bool saveTargetAsPreset(const QString& name, OXMenum type) override;
    // A new OXWPresetSaveDialogExtensionWidget of this handler (no parent).
    QWidget* createSaveDialogExtension() override;
    bool setTargetObject(OXMObject* target) override;
    // Presets of other viewers: see OXWPresetTransferFunctionMapping. The target's transfer
    // function covers the histogram's bin range.
    OXMObjectPtr recordFromTransferFunction(const OXWTransferFunction& preset) const override;
    bool targetTransferFunction(OXWTransferFunction& preset) const override;
    void iocCallback(OXMIOC::Message& message) override;

    // Whether the next preset saved is absolute; applying a preset sets it to its mode.
    void setAbsolutePreset(bool absolute) { mAbsolute = absolute; }
    bool isAbsolutePreset() const { return mAbsolute; }

    // The channels in the handler's order; loops run from the last to the first.
    static const std::array<OXMenum, ChannelCount>& channelTable();
    static const QStringList& defaultPresetNames();

    OXMObject* volume() const { return mVolume.get(); }
    OXMObject* region() const { return mRegion.get(); }
    OXMObject* renderPlugin() const { return mRenderPlugin.get(); }
    OXMObject* settingsHolder() const { return mSettingsHolder.get(); }
    OXMObject* material() const { return mMaterial.get(); }

private:
    // The first and last bin index of the histogram (its calculation is run first).
    bool greyValueRange(OXWPresetConversion::Range& range) const;
    // Absolute presets hold data values: the bins of data whose bins do not count one value
    // each (floating-point data, wide integers) are mapped to the values at their centres when
    // a preset is saved, and back onto the target's bins when one is applied. Bin b of a
    // histogram whose first and last bins hold the values v0 and v1 (its "DataRange") is the
    // value v0 + (b - first) * (v1 - v0) / (last - first); for data counted one value per bin
    // this is b itself. False without a histogram.
    bool mapAbsolutePositions(OXMObject* record, bool toValues) const;
    bool convertRecord(OXMObject* record, OXWPresetConversion::Range range, bool absolute) const;
    bool writeRenderSettings(const OXMObject& record);
    bool writeClassification(OXMObject* record);
    OXMObject* targetMaterial() const;
    bool applyDefaultPreset(const QString& name);
    bool writeDefaultIntervals(OXMObject& material, int preset, OXWPresetConversion::Range range);
    bool writeDefaultCurves(int preset, OXWPresetConversion::Range range);
    bool writeDefaultRenderSettings(int preset);
    bool setChannelCurve(OXMenum channel, const std::vector<OXMVector2<float>>& handles);
    bool setChannelConstant(OXMenum channel, float value);
    bool copyRenderSettingsInto(OXMObject* record) const;
    // Replaces the volume's render plug-in by a new object of the class (no change when it
    // is of that class already).
    bool setRenderPlugin(const QString& className);
    OXMObject* findCameraRenderSettings() const;
    void chooseSettingsHolder();
    void readMaterial();
    bool isRelevant(OXMObject* sender, OXMenum property) const;

    std::array<OXMObjectIOCPtr, ChannelCount> mChannels;
    OXMObjectIOCPtr mMaterial;
    OXMObjectIOCPtr mVolume;
    OXMObjectIOCPtr mRegion;
    OXMObjectIOCPtr mRenderPlugin;
    OXMObjectIOCPtr mSettingsHolder;
    bool mAbsolute = false;
};
