#pragma once

// Helpers of the views' tests: phantom volumes and typed property access.

#include <OXMHistogram.h>
#include <OXMObject.h>
#include <OXMObjectLink.h>
#include <OXMObjectPtr.h>
#include <OXMSampleGrid.h>
#include <OXMSampleMaterial.h>
#include <OXMSampleTransferSpec.h>
#include <OXMScenePhantom.h>
#include <OXMVolumeRenderObject.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>

#include <functional>
#include <vector>

namespace oxwviewtest {

template <typename T>
std::vector<T> array(const OXMObject* o, OXMenum id)
{
    auto* a = OXMValueArrayPropertyIF<T>::getInterface(o ? o->getProperty(id) : nullptr);
    return a ? a->getArray() : std::vector<T>();
}

template <typename T>
bool setArray(OXMObject* o, OXMenum id, const std::vector<T>& values)
{
    auto* a = OXMValueArrayPropertyIF<T>::getInterface(o ? o->getProperty(id) : nullptr);
    return a && a->initArray(0, int(values.size()) - 1, values.data());
}

inline OXMObject* link(const OXMObject* o, OXMenum id)
{
    OXMObjectLink l;
    return o && o->getValue(id, l) ? l.getLink() : nullptr;
}

// A 16-bit phantom volume (size³ voxels) with its histogram calculated; the caller holds it.
inline OXMVolumeRenderObject* phantom16(int size, bool calculate = true)
{
    auto* volume = OXMVolumeRenderObject::create(OXMScenePhantom::createGrid16(size), "Phantom");
    if (calculate && volume && volume->getHistogram())
        volume->getHistogram()->execute(OXM::Calculate);
    return volume;
}

// Processes events until the condition holds or the time is up.
inline bool waitFor(const std::function<bool()>& condition, int timeoutMs = 2000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QTest::qSleep(1);
    }
    return true;
}

} // namespace oxwviewtest
