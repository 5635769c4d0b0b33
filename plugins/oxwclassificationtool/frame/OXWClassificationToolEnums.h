#pragma once

#include "OXMRegisteredEnum.h"

// The plug-in's registered enumeration values. Every component registers, for itself, the
// values it reads or writes with a static OXMRegisteredEnum(name, false, Namespace); all
// registrations of one name yield the same OXMenum. The object identifiers of the plug-in's
// classes are registered lazily by their getObjectID(0).
class OXWClassificationToolEnums
{
public:
    static constexpr const char* Namespace = "oxwclassificationtool";

    // The 22 names of the plug-in's vocabulary; the last three are the object identifiers.
    static constexpr int NameCount = 22;
    static const char* const Names[NameCount];

    // The frame's own static registrations (plug-in entry).
    static OXMenum default3DRendererPreferences();

    // Termination: destroys, from the last found to the first, every registration of the
    // namespace whose ownership flag is set. Returns how many were destroyed. Registrations
    // with the flag clear (all of the plug-in's own) stay until the module is unloaded.
    static int removeOwnedRegistrations();
};
