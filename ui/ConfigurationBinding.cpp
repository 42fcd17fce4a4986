#include "ui/ConfigurationBinding.h"

#include "ports/OperatorPrompts.h"
#include "session/MeterSession.h"
#include "settings/SettingTable.h"
#include "ui/ApplyConfigurationDialog.h"
#include "ui/CommissioningReportDialog.h"
#include "ui/FieldValues.h"
#include "ui/LoadProfileBinding.h"
#include "ui/MainForm.h"
#include "ui/SettingsTabBinding.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSaveFile>

#include <algorithm>

namespace {

// Every block a configuration is made of.
constexpr unsigned kConfigurationBlocks = MeterReading::RealTimeImage | MeterReading::Ratios | MeterReading::PtRatio2;
// A report holds every block: the measurements and energies besides the configuration.
constexpr unsigned kReportBlocks = kConfigurationBlocks | MeterReading::Frequency | MeterReading::Energy;

bool IsGroup(Setting setting)
{
    return setting == Setting::LpGroup1 || setting == Setting::LpGroup2;
}

int GroupOf(Setting setting)
{
    return setting == Setting::LpGroup1 ? 0 : 1;
}

// The file the operator picks; empty when the dialog was cancelled.
QString AskPath(QWidget* owner, const QString& caption, QFileDialog::AcceptMode mode)
{
    QFileDialog dialog(owner, caption, QString(), QStringLiteral("Configuration (*.json);;All files (*)"));
    dialog.setObjectName(QStringLiteral("ConfigurationFileDialog"));
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    dialog.setDefaultSuffix(QStringLiteral("json"));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace

ConfigurationBinding::ConfigurationBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts,
                                           const SettingsTabBinding& settingsTab)
    : m_form(form), m_session(session), m_prompts(prompts), m_settingsTab(settingsTab), m_writes(session)
{
    connect(form.cmd_SaveConfig, &QPushButton::clicked, this, &ConfigurationBinding::SaveConfiguration);
    connect(form.cmd_ApplyConfig, &QPushButton::clicked, this, &ConfigurationBinding::ApplyConfiguration);
    connect(form.cmd_TakeMeterValues, &QPushButton::clicked, this, &ConfigurationBinding::TakeMeterValues);
    connect(form.cmd_CommissioningReport, &QPushButton::clicked, this, &ConfigurationBinding::WriteReport);
    connect(&session, &MeterSession::onLineChanged, this, &ConfigurationBinding::ShowEnabled);
    connect(&session.poll, &PollCycle::readingTaken, this, &ConfigurationBinding::ShowEnabled);
    ShowEnabled();
}

// Written beside and renamed over: a failed write leaves the old file as it was.
void ConfigurationBinding::SaveConfiguration()
{
    const QString path = AskPath(&m_form, QStringLiteral("Save configuration"), QFileDialog::AcceptSave);
    if (path.isEmpty())
        return;
    const MeterReading& reading = m_session.Reading();
    const ConfigurationSource source{QString::fromLatin1(reading.identification), reading.takenAt,
                                     QCoreApplication::applicationVersion()};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(ConfigurationJson(ConfigurationOf(reading, source))) < 0 || !file.commit())
        m_prompts.Critical(QStringLiteral("Cannot write %1: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
}

// The file is checked whole before anything is asked or sent. The requests belong to the
// connection the first question was put on.
void ConfigurationBinding::ApplyConfiguration()
{
    const quint64 askedOn = m_session.connection.Number();
    const QString path = AskPath(&m_form, QStringLiteral("Apply configuration"), QFileDialog::AcceptOpen);
    if (path.isEmpty())
        return;
    const QString shown = QDir::toNativeSeparators(path);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_prompts.Critical(QStringLiteral("Cannot read %1: %2").arg(shown, file.errorString()));
        return;
    }
    const ParsedConfiguration parsed = ParseConfiguration(file.readAll());
    if (!parsed.configuration) {
        m_prompts.Critical(QStringLiteral("%1 refused: %2").arg(shown, parsed.error));
        return;
    }
    const MeterReading reading = m_session.Reading();
    QList<SettingComparison> differences;
    for (const SettingComparison& c : Compare(*parsed.configuration, reading)) {
        if (c.differs)
            differences.append(c);
    }
    if (differences.isEmpty()) {
        QMessageBox::information(&m_form, QStringLiteral("Apply configuration"),
                                 QStringLiteral("The meter matches %1: nothing to write.").arg(shown));
        return;
    }
    ApplyConfigurationDialog dialog(&m_form, path, differences);
    if (dialog.exec() != QDialog::Accepted)
        return;
    QList<ConfiguredSetting> writes;
    for (const SettingComparison& c : std::as_const(differences)) {
        if (IsCommunication(c.item.setting) && !dialog.WithCommunication())
            continue;
        const SettingSpec& entry = SpecOf(c.item.setting);
        if (DeletesRecords(c.item.setting, c.item.value, reading) && !m_prompts.Confirm(entry.caption, entry.question))
            continue;
        writes.append(c.item);
    }
    m_writes.Send(writes, askedOn);
}

// Display items: the position chosen now (the first when none is) takes the meter's item.
// PT ratio 2: the meter keeps only the ratio, so the secondary typed stays and the primary
// follows it.
void ConfigurationBinding::TakeMeterValues()
{
    const int position = std::max(1, FieldText(m_form.Combo_Display_Ser_sel).toInt());
    const double secondary = std::max(0.0, m_form.txtPT2->text().toDouble());
    const MeterConfiguration held = ConfigurationOf(m_session.Reading(), {});
    for (ConfiguredSetting item : held.settings) {
        if (item.setting == Setting::DisplayItem && int(item.value.fields.value(0)) != position)
            continue;
        if (item.setting == Setting::PtRatio2 && secondary > 0)
            item.value.fields = {item.value.fields.value(0) * secondary, secondary};
        ShowValue(item.setting, item.value,
                  IsGroup(item.setting) ? GroupFields(m_form, GroupOf(item.setting)) : m_settingsTab.FieldsOf(item.setting));
    }
}

void ConfigurationBinding::WriteReport()
{
    CommissioningReportDialog dialog(m_form);
    dialog.exec();
}

// The report stays to be had off line: it then gives the last reading as not current.
void ConfigurationBinding::ShowEnabled()
{
    const unsigned known = m_session.Reading().known;
    const bool whole = m_session.OnLine() && (known & kConfigurationBlocks) == kConfigurationBlocks;
    for (QPushButton* button : {m_form.cmd_SaveConfig, m_form.cmd_ApplyConfig, m_form.cmd_TakeMeterValues})
        button->setEnabled(whole);
    m_form.cmd_CommissioningReport->setEnabled((known & kReportBlocks) == kReportBlocks);
}
