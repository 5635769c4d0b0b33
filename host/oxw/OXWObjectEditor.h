#pragma once

#include <OXMenum.h>

#include <QString>

#include <vector>

// The host's object editors: an editor is a widget class, created by name through the class
// manager, that edits objects reached by a path (OXWObjectEditorHandlerIF). Where an editor
// appears is said by an EnumMapping.
class OXWObjectEditor
{
public:
    // Places the editor of the objects at path in a tree of editors (the preference dialog).
    //
    // path: the keys leading to the edited object, given as one string whose "/"-separated
    //   parts are names of registered values (the host namespace first, then any other):
    //   "Preferences/Default3DRendererPreferences" is the preference of that identifier.
    // treeText: the tree levels, separated by "/", each "label|order|description":
    //   "Advanced settings|99|Advanced settings/Default 3D rendering|0|Rendering settings".
    //   Levels of the same label share a node; siblings are sorted by order, then label.
    // editorClass: the class name of the editor widget.
    // groupText: empty for an editor that fills the page of its node; "label|order" puts it,
    //   with others, as a titled group on that page, groups sorted by order.
    // flags: passed on to the editor's host; the preference dialog ignores them.
    struct EnumMapping
    {
        EnumMapping(const char* path, const QString& treeText, const char* editorClass,
                    const QString& groupText, int flags);

        std::vector<OXMenum> path;
        QString pathText;
        QString treeText;
        QString editorClass;
        QString groupText;
        int flags = 0;

        // False when a part of the path names no registered value, or a text is malformed.
        bool isValid() const;
    };

    // One level of a tree text: "label|order|description" (order 0 and an empty description
    // when missing).
    struct TreeLevel
    {
        QString label;
        int order = 0;
        QString description;
    };
    // The levels of a tree text; empty when a level has no label.
    static std::vector<TreeLevel> parseTreeText(const QString& treeText);
    // A group text "label|order"; false when the label is empty.
    static bool parseGroupText(const QString& groupText, QString& label, int& order);
};
