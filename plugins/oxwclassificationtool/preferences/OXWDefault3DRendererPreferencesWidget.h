#pragma once

#include "OXWDefault3DRendererPreferencesWidgetUI.h"

#include <OXMObjectIOCPtr.h>
#include <OXMObjectPath.h>
#include <OXMObjectWeakPtr.h>
#include <OXWObjectEditorHandlerIF.h>

#include <QString>

#include <array>
#include <memory>
#include <vector>

// The editor page of the "Default 3D rendering" preference: the combo box chooses one of ten
// renderers, each a pair of render plug-in class name and shading model written into every
// edited OXMDefault3DRendererPreferences object; the check box writes "SecondLightShadow".
//
// The page shows the current object (the first edited one, or the one that was current
// before, when it is edited still) and refreshes on show, on paint and on every change of an
// edited object, while it is visible. A pair that is in no row of the table leaves the combo
// box as it was.
//
// The host creates the page by the class name "OXWDefault3DRendererPreferencesWidget" (module
// "oxwclassificationtool"), a tool window without parent, and destroys it through the class's
// factory.
class OXWDefault3DRendererPreferencesWidget : public OXWDefault3DRendererPreferencesWidgetUI,
                                              public OXWObjectEditorHandlerIF
{
    Q_OBJECT
public:
    static constexpr int RendererCount = 10;

    OXWDefault3DRendererPreferencesWidget(QWidget* parent = nullptr, const char* name = nullptr,
                                          Qt::WindowFlags flags = Qt::WindowFlags());
    ~OXWDefault3DRendererPreferencesWidget() override;

    static const OXMMetaClass* metaClass();
    const OXMMetaClass* getMetaClass() const override;
    // Index 0: "OXWDefault3DRendererPreferencesWidget" of the plug-in's namespace (registered
    // on first use); index n: the interface's index n - 1.
    OXMenum getObjectID(int index) const override;

    // True when the last link of every path is an OXMDefault3DRendererPreferences (and for
    // none).
    bool canEdit(const OXMObjectPath* paths, int count) override;
    void setEditedObjects(const OXMObjectPath* paths, int count) override;
    QWidget* editorWidget() override { return this; }

    void iocCallback(Message& message) override;

    // The renderer table: the combo text, class name and shading model of row index.
    static QString rendererText(int index);
    static const char* rendererClassName(int index);
    static OXMenum rendererShadingModel(int index);

protected slots:
    // Writes the row's shading model and class name into every edited object.
    void setDefault3DRenderer(int index);
    // 2: OXM::True, 0: OXM::False, 1: each object keeps its value.
    void setSecondLightShadow(int state);

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();

    std::vector<OXMObjectPath> mEditedPaths;
    std::vector<std::unique_ptr<OXMObjectIOCPtr>> mEditedObjects;
    OXMObjectWeakPtr mCurrentObject;
    std::array<const char*, RendererCount> mRendererClassNames;
    std::array<OXMenum, RendererCount> mRendererShadingModels;
};
