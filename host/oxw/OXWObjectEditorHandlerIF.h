#pragma once

#include <OXMObject.h>

class OXMObjectPath;
class QWidget;

// The interface of an object editor: a widget class that the host creates by its class name
// (OXMClassManager::createObject), asks whether it can edit some objects, hands the objects'
// paths and embeds the widget. The editor is an OXMObject so that it can listen to the objects
// it edits; the host destroys it through its meta-class (OXMMetaClass::destruct).
//
// A class implementing it derives from a QWidget class and from this interface, and gives
// its meta-class this class's meta-class as base. The class of this interface is abstract:
// it has no factory.
class OXWObjectEditorHandlerIF : public OXMObject
{
public:
    OXWObjectEditorHandlerIF();
    ~OXWObjectEditorHandlerIF() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    // Index 0: "OXWObjectEditorHandlerIF" (host namespace); index n: OXMObject's n - 1.
    OXMenum getObjectID(int index) const override;

    // Whether the editor can edit every object that the paths lead to (true for none).
    virtual bool canEdit(const OXMObjectPath* paths, int count) = 0;
    // The objects to edit from now on (the last link of each path); none for count < 1.
    virtual void setEditedObjects(const OXMObjectPath* paths, int count) = 0;
    // The editor as a widget, to be embedded by the host.
    virtual QWidget* editorWidget() = 0;
};
