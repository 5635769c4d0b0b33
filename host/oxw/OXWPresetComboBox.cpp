#include "OXWPresetComboBox.h"

#include "OXWApplication.h"
#include "OXWFileDialog.h"
#include "OXWPresetDefaultHandler.h"
#include "OXWPresetHandler.h"
#include "OXWPresetSaveDialog.h"
#include "OXWPresetStore.h"

#include <OXMError.h>
#include <OXMenum.h>

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QStandardItemModel>

namespace {

QStringList presetFilters()
{
    return {QCoreApplication::translate("OXWPresetComboBox", "Presets (*%1)")
                .arg(QLatin1String(OXWPresetStore::Suffix))};
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
    const bool enabled[] = {false, storing && storing->getTargetObject(), storing && userPreset,
                            storing != nullptr, storing && userPreset};
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
        OXM::Preset, OXWApplication::parsePath("${USER_DOCUMENTS}"), presetFilters(), this,
        "importPresetDialog", tr("Import Preset"));
    QString name;
    if (fileName.isEmpty())
        return;
    if (!handler->readPresetFile(fileName, name)) {
        warn(handler->lastError());
        return;
    }
    if (handler->hasUserPreset(name) &&
        !confirm(tr("A preset named \"%1\" exists already. Replace it?").arg(name)))
        return;
    if (!handler->importPreset(fileName, name))
        warn(handler->lastError());
}

void OXWPresetComboBox::exportPreset()
{
    OXWPresetDefaultHandler* handler = storingHandler();
    const QString name = currentUserPreset();
    if (!handler || name.isEmpty())
        return;
    const QString start = QDir(OXWApplication::parsePath("${USER_DOCUMENTS}"))
                              .filePath(QString(name).replace(QLatin1Char('/'), QLatin1Char('_')) +
                                        QLatin1String(OXWPresetStore::Suffix));
    const QString fileName = OXWFileDialog::getSaveFileName(
        OXM::Preset, start, presetFilters(), this, "exportPresetDialog", tr("Export Preset"));
    if (!fileName.isEmpty() && !handler->exportPreset(name, fileName))
        warn(handler->lastError());
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
