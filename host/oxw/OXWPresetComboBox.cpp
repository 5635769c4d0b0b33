#include "OXWPresetComboBox.h"

#include "OXWApplication.h"
#include "OXWFileDialog.h"
#include "OXWPresetDefaultHandler.h"
#include "OXWPresetHandler.h"
#include "OXWPresetImportDialog.h"
#include "OXWPresetSaveDialog.h"
#include "OXWPresetStore.h"
#include "OXWTransferFunctionFile.h"

#include <OXMError.h>
#include <OXMenum.h>

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QStandardItemModel>

#include <algorithm>

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("OXWPresetComboBox", text);
}

// The host's own preset files, ParaView's colour maps and Slicer's presets; when reading, all
// of them first.
QStringList presetFilters(bool reading, bool native)
{
    const QString own = QStringLiteral("*") + QLatin1String(OXWPresetStore::Suffix);
    QStringList filters = {tr("ParaView colour maps (*.json)"), tr("3D Slicer presets (*.xml)")};
    if (native)
        filters.prepend(tr("Presets (%1)").arg(own));
    if (reading)
        filters.prepend(tr("All presets (%1 *.json *.xml)").arg(own));
    return filters;
}

// Names for presets imported together: each made valid, a repeated one numbered.
QStringList importNames(const OXWPresetDefaultHandler& handler,
                        const std::vector<OXWTransferFunction>& presets)
{
    QStringList names;
    for (const OXWTransferFunction& preset : presets) {
        const QString name = handler.importName(preset.name);
        QString unique = name;
        for (int n = 2; names.contains(unique); ++n)
            unique = QStringLiteral("%1 %2").arg(name).arg(n);
        names << unique;
    }
    return names;
}

} // namespace

OXWPresetComboBox::OXWPresetComboBox(QWidget* parent, const char* name, const char* presetType)
    : QComboBox(parent), mPresetType(presetType ? QString::fromLatin1(presetType) : QString())
{
    if (name)
        setObjectName(QString::fromLatin1(name));
    mHandler.setListener(this);
    const struct
    {
        ActionKind kind;
        QString text;
        void (OXWPresetComboBox::*slot)();
    } actions[] = {{SaveAction, tr("Save Preset..."), &OXWPresetComboBox::savePreset},
                   {RemoveAction, tr("Remove Preset..."), &OXWPresetComboBox::removePreset},
                   {ImportAction, tr("Import Preset..."), &OXWPresetComboBox::importPreset},
                   {ExportAction, tr("Export Preset..."), &OXWPresetComboBox::exportPreset}};
    for (const auto& a : actions) {
        mActions[a.kind] = new QAction(a.text, this);
        connect(mActions[a.kind], &QAction::triggered, this, a.slot);
    }
    connect(this, QOverload<int>::of(&QComboBox::activated), this,
            &OXWPresetComboBox::itemActivated);
    setPlaceholderText(tr("(no preset)"));
}

OXWPresetComboBox::~OXWPresetComboBox()
{
    mHandler = nullptr;
}

OXWPresetHandler* OXWPresetComboBox::presetHandler() const
{
    if (mHandlerID.isEmpty())
        return nullptr;
    const QByteArray name = mHandlerID.toLatin1();
    return OXWPresetHandler::getPresetHandler(OXMenum::find(name.constData()));
}

OXWPresetDefaultHandler* OXWPresetComboBox::storingHandler() const
{
    return dynamic_cast<OXWPresetDefaultHandler*>(presetHandler());
}

// --- listing ---------------------------------------------------------------------------------

void OXWPresetComboBox::refresh()
{
    OXWPresetHandler* handler = presetHandler();
    if (mHandler.get() != handler)
        mHandler = handler;
    const QSignalBlocker block(this);
    clear();
    if (!handler)
        return;
    std::vector<OXMenum> types = {OXM::DefaultPreset, OXM::UserPreset};
    if (!mPresetType.isEmpty())
        types = {OXMenum::find(mPresetType.toLatin1().constData())};
    for (OXMenum type : types) {
        QStringList names;
        if (!handler->getPresetList(names, type) || names.isEmpty())
            continue;
        if (count() > 0)
            insertSeparator(count());
        for (const QString& name : names) {
            const QPixmap picture = mGroupIcons ? handler->getPresetPixmap(name, type) : QPixmap();
            addItem(picture.isNull() ? QIcon() : QIcon(picture), name);
            setItemData(count() - 1, name, NameRole);
            setItemData(count() - 1, type.toInt(), TypeRole);
        }
    }
    addActionItems();
    showCurrent();
}

void OXWPresetComboBox::addActionItems()
{
    const bool offered[] = {false, mSaveAction, mRemoveAction, mImportAction, mExportAction};
    bool first = true;
    for (int kind = SaveAction; kind <= ExportAction; ++kind) {
        if (!offered[kind])
            continue;
        if (first && count() > 0)
            insertSeparator(count());
        first = false;
        addItem(mActions[kind]->text());
        setItemData(count() - 1, kind, ActionRole);
    }
}

void OXWPresetComboBox::showCurrent()
{
    OXWPresetHandler* handler = presetHandler();
    const QString current = handler ? handler->getCurrentPreset() : QString();
    const QSignalBlocker block(this);
    for (int i = 0; i < count(); ++i) {
        if (itemData(i, NameRole).isValid())
            setItemText(i, itemData(i, NameRole).toString());
    }
    const int index = findPreset(current);
    setCurrentIndex(index);
    if (index >= 0 && handler->isCurrentPresetModified())
        setItemText(index, tr("%1 (modified)").arg(current));

    OXWPresetDefaultHandler* storing = storingHandler();
    const bool userPreset = !currentUserPreset().isEmpty();
    const bool target = storing && storing->getTargetObject();
    const bool enabled[] = {false, target, storing && userPreset, storing != nullptr,
                            storing && (userPreset || target)};
    auto* items = qobject_cast<QStandardItemModel*>(model());
    for (int kind = SaveAction; kind <= ExportAction; ++kind) {
        mActions[kind]->setEnabled(enabled[kind]);
        const int item = findAction(ActionKind(kind));
        if (items && item >= 0)
            items->item(item)->setEnabled(enabled[kind]);
    }
}

int OXWPresetComboBox::findPreset(const QString& name) const
{
    for (int i = 0; i < count() && !name.isEmpty(); ++i) {
        if (itemData(i, NameRole).toString() == name)
            return i;
    }
    return -1;
}

int OXWPresetComboBox::findAction(ActionKind kind) const
{
    return findData(int(kind), ActionRole);
}

QString OXWPresetComboBox::currentUserPreset() const
{
    const int index = findPreset(presetHandler() ? presetHandler()->getCurrentPreset() : QString());
    return index >= 0 && itemData(index, TypeRole).toInt() == OXM::UserPreset.toInt()
               ? itemData(index, NameRole).toString()
               : QString();
}

void OXWPresetComboBox::showPopup()
{
    refresh();
    QComboBox::showPopup();
}

void OXWPresetComboBox::showEvent(QShowEvent* event)
{
    refresh();
    QComboBox::showEvent(event);
}

void OXWPresetComboBox::iocCallback(OXMIOC::Message& message)
{
    if (mHandler.get() && message.getInitialSender() == mHandler.get()) {
        const OXMenum property = message.getPropertyID();
        if (property == OXM::UserPreset)
            refresh();
        else if (property == OXM::Preset || property == OXM::PresetModified)
            showCurrent();
    }
    OXMIOC::iocCallback(message);
}

// --- picking ---------------------------------------------------------------------------------

void OXWPresetComboBox::itemActivated(int index)
{
    const int action = itemData(index, ActionRole).toInt();
    if (action != NoAction) {
        showCurrent();
        if (mActions[action]->isEnabled())
            mActions[action]->trigger();
        return;
    }
    if (itemData(index, NameRole).isValid() &&
        !applyPreset(itemData(index, NameRole).toString(),
                     OXMenum(itemData(index, TypeRole).toInt())))
        showCurrent();
}

bool OXWPresetComboBox::applyPreset(const QString& name, OXMenum type)
{
    OXWPresetHandler* handler = presetHandler();
    if (!handler)
        return false;
    if (OXWPresetDefaultHandler* storing = storingHandler())
        storing->clearLastError();
    bool ok = false;
    {
        OXWApplication::UserActionScope step(tr("Apply preset \"%1\"").arg(name),
                                             OXWApplication::StepName::FromThisAction);
        ok = handler->applyPresetToTarget(name, type);
    }
    if (ok)
        return handler->setCurrentPreset(name);
    const QString reason = storingHandler() ? storingHandler()->lastError() : QString();
    OXMError::emitError(handler, OXM::GenericError,
                        reason.isEmpty()
                            ? tr("The preset \"%1\" could not be applied.").arg(name)
                            : tr("The preset \"%1\" could not be applied: %2").arg(name, reason));
    return false;
}

// --- the actions -----------------------------------------------------------------------------

void OXWPresetComboBox::savePreset()
{
    OXWPresetDefaultHandler* handler = storingHandler();
    if (!handler)
        return;
    const QString name = OXWPresetSaveDialog::getPresetName(handler, currentUserPreset(), this);
    if (name.isEmpty())
        return;
    handler->clearLastError();
    if (handler->saveTargetAsPreset(name, OXM::UserPreset)) {
        handler->setCurrentPreset(name);
        refresh();
        return;
    }
    warn(handler->lastError().isEmpty() ? tr("The preset \"%1\" could not be saved.").arg(name)
                                        : handler->lastError());
}

void OXWPresetComboBox::removePreset()
{
    OXWPresetDefaultHandler* handler = storingHandler();
    const QString name = currentUserPreset();
    if (!handler || name.isEmpty() || !confirm(tr("Remove the preset \"%1\"?").arg(name)))
        return;
    if (!handler->deletePreset(name, OXM::UserPreset))
        warn(handler->lastError());
}

void OXWPresetComboBox::importPreset()
{
    OXWPresetDefaultHandler* handler = storingHandler();
    if (!handler)
        return;
    const QString fileName = OXWFileDialog::getOpenFileName(
        OXM::Preset, OXWApplication::parsePath("${USER_DOCUMENTS}"), presetFilters(true, true),
        this, "importPresetDialog", tr("Import Preset"));
    if (fileName.isEmpty())
        return;
    OXWTransferFunctionFile::Format format;
    std::vector<OXWTransferFunction> presets;
    QString error;
    const bool read = OXWTransferFunctionFile::read(fileName, format, presets, error);
    if (format == OXWTransferFunctionFile::Format::Native ||
        format == OXWTransferFunctionFile::Format::Unknown)
        importNativePreset(fileName);
    else if (!read)
        warn(error);
    else
        importForeignPresets(fileName, presets);
}

void OXWPresetComboBox::importNativePreset(const QString& fileName)
{
    OXWPresetDefaultHandler* handler = storingHandler();
    QString name;
    if (!handler->readPresetFile(fileName, name)) {
        warn(handler->lastError());
        return;
    }
    if (!confirmReplacing({name}))
        return;
    if (!handler->importPreset(fileName, name))
        warn(handler->lastError());
}

void OXWPresetComboBox::importForeignPresets(const QString& fileName,
                                             const std::vector<OXWTransferFunction>& presets)
{
    OXWPresetDefaultHandler* handler = storingHandler();
    QStringList lines;
    for (const OXWTransferFunction& preset : presets)
        lines << OXWTransferFunctionFile::describe(preset);
    if (std::none_of(presets.begin(), presets.end(),
                     [](const OXWTransferFunction& p) { return p.isUsable(); })) {
        warn(tr("%1 holds no preset that can be imported:\n%2")
                 .arg(QDir::toNativeSeparators(fileName), lines.join(QLatin1Char('\n'))));
        return;
    }
    std::vector<int> chosen = {0};
    if (presets.size() > 1 && !OXWPresetImportDialog::choose(presets, fileName, chosen, this))
        return;
    std::vector<OXWTransferFunction> imported;
    for (int index : chosen)
        imported.push_back(presets[std::size_t(index)]);
    const QStringList names = importNames(*handler, imported);
    if (!confirmReplacing(names))
        return;
    handler->clearLastError();
    if (!handler->importTransferFunctions(imported, names, fileName))
        warn(handler->lastError());
}

void OXWPresetComboBox::exportPreset()
{
    OXWPresetDefaultHandler* handler = storingHandler();
    const QString userPreset = currentUserPreset();
    if (!handler || (userPreset.isEmpty() && !handler->getTargetObject()))
        return;
    QString name = handler->getCurrentPreset();
    if (name.isEmpty())
        name = handler->presetCategoryText();
    const QString suffix =
        userPreset.isEmpty() ? QStringLiteral(".json") : QLatin1String(OXWPresetStore::Suffix);
    const QString start =
        QDir(OXWApplication::parsePath("${USER_DOCUMENTS}"))
            .filePath(QString(name).replace(QLatin1Char('/'), QLatin1Char('_')) + suffix);
    const QString fileName = OXWFileDialog::getSaveFileName(
        OXM::Preset, start, presetFilters(false, !userPreset.isEmpty()), this, "exportPresetDialog",
        tr("Export Preset"));
    if (fileName.isEmpty())
        return;
    const auto format = OXWTransferFunctionFile::formatOfName(fileName);
    const bool ok = format == OXWTransferFunctionFile::Format::Native
                        ? !userPreset.isEmpty() && handler->exportPreset(userPreset, fileName)
                        : handler->exportTransferFunction(name, fileName, format);
    if (!ok)
        warn(handler->lastError().isEmpty() ? tr("The preset could not be exported.")
                                            : handler->lastError());
}

bool OXWPresetComboBox::confirmReplacing(const QStringList& names)
{
    QStringList existing;
    for (const QString& name : names) {
        if (storingHandler()->hasUserPreset(name))
            existing << name;
    }
    if (existing.isEmpty())
        return true;
    return confirm(existing.size() == 1
                       ? tr("A preset named \"%1\" exists already. Replace it?").arg(existing[0])
                       : tr("%1 presets of these names exist already: %2. Replace them?")
                             .arg(existing.size())
                             .arg(existing.join(QStringLiteral(", "))));
}

bool OXWPresetComboBox::confirm(const QString& question)
{
    return QMessageBox::question(this, tr("Presets"), question, QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

void OXWPresetComboBox::warn(const QString& text)
{
    QMessageBox::warning(this, tr("Presets"), text);
}
