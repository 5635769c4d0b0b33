#include "OXWObjectEditor.h"

#include <QStringList>

OXWObjectEditor::EnumMapping::EnumMapping(const char* pathString, const QString& tree,
                                          const char* editor, const QString& group, int f)
    : pathText(QString::fromUtf8(pathString ? pathString : "")), treeText(tree),
      editorClass(QString::fromUtf8(editor ? editor : "")), groupText(group), flags(f)
{
    for (const QString& part : pathText.split(QLatin1Char('/'), Qt::SkipEmptyParts))
        path.push_back(OXMenum::find(part.toUtf8().constData()));
}

bool OXWObjectEditor::EnumMapping::isValid() const
{
    if (path.empty() || editorClass.isEmpty() || parseTreeText(treeText).empty())
        return false;
    for (const OXMenum& key : path) {
        if (!key.isValid())
            return false;
    }
    QString label;
    int order = 0;
    return groupText.isEmpty() || parseGroupText(groupText, label, order);
}

std::vector<OXWObjectEditor::TreeLevel> OXWObjectEditor::parseTreeText(const QString& treeText)
{
    std::vector<TreeLevel> levels;
    for (const QString& level : treeText.split(QLatin1Char('/'))) {
        const QStringList fields = level.split(QLatin1Char('|'));
        TreeLevel parsed;
        parsed.label = fields.value(0).trimmed();
        if (parsed.label.isEmpty())
            return {};
        parsed.order = fields.value(1).toInt();
        parsed.description = fields.mid(2).join(QLatin1Char('|'));
        levels.push_back(parsed);
    }
    return levels;
}

bool OXWObjectEditor::parseGroupText(const QString& groupText, QString& label, int& order)
{
    const QStringList fields = groupText.split(QLatin1Char('|'));
    label = fields.value(0).trimmed();
    order = fields.value(1).toInt();
    return !label.isEmpty();
}
