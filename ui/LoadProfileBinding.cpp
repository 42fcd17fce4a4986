#include "ui/LoadProfileBinding.h"

#include "loadprofile/LpPace.h"
#include "ports/OperatorPrompts.h"
#include "ports/TextNumbers.h"
#include "session/MeterSession.h"
#include "ui/ConfirmedRequest.h"
#include "ui/FieldValues.h"
#include "ui/MainForm.h"
#include "ui/StateColours.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QUrl>

#include <algorithm>

namespace {

// The rate over the run so far and the time the rest takes at it, as "m:ss"; a dash for both
// until a step has been saved.
QString PaceText(qint32 done, qint32 total, qint64 elapsedMs)
{
    const std::optional<LpPace> pace = LpPace::Of(done, total - done, double(elapsedMs) / 1000);
    if (!pace)
        return QStringLiteral("Rate — · time left —");
    return QStringLiteral("%1 intervals/s · %2 left").arg(pace->perSecond, 0, 'f', 1).arg(pace->TimeLeft());
}

// Each group's set-up and clear, as settings.
constexpr Setting kGroupSettings[] = {Setting::LpGroup1, Setting::LpGroup2};
constexpr Setting kGroupClears[] = {Setting::LpClear1, Setting::LpClear2};

} // namespace

QList<QWidget*> GroupFields(const MainForm& form, int group)
{
    const ControlArray<QComboBox>& lists = group == 0 ? form.Combo_G1_Setting : form.Combo_G2_Setting;
    QList<QWidget*> fields;
    for (int element : lists.indices())
        fields.append(lists(element));
    return fields;
}

LoadProfileBinding::LoadProfileBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts)
    : m_form(form), m_session(session), m_prompts(prompts)
{
    MainForm& f = form;
    // Comm_LP_G1_Set_Click, Comm_LP_G2_Set_Click, Comm_Clr_G1_Data_Click, Comm_Clr_G2_Data_Click.
    connect(f.Comm_LP_G1_Set, &QPushButton::clicked, this, [this] { SendGroupSetting(0); });
    connect(f.Comm_LP_G2_Set, &QPushButton::clicked, this, [this] { SendGroupSetting(1); });
    connect(f.Comm_Clr_G1_Data, &QPushButton::clicked, this, [this] { ClearGroupData(0); });
    connect(f.Comm_Clr_G2_Data, &QPushButton::clicked, this, [this] { ClearGroupData(1); });

    connect(f.Combo_LP_Read_Group_Sel, &QComboBox::currentTextChanged, this, &LoadProfileBinding::ChooseDownloadGroup);
    ChooseDownloadGroup();
    connect(f.Command8, &QPushButton::clicked, this, &LoadProfileBinding::Command8_Click);
    // Combo_LP_Start_No_Validate, Combo_LP_Stop_No_Validate.
    for (QComboBox* list : {f.Combo_LP_Start_No, f.Combo_LP_Stop_No})
        m_checks.Add(list, [this, list] { CheckAgainstValid(list); });
    connect(&session.download, &LpDownload::faceChanged, this, &LoadProfileBinding::ShowFace);
    m_failure = f.findChild<QLabel*>(QStringLiteral("LpDownloadFailure"));
    m_progress = f.findChild<QProgressBar*>(QStringLiteral("LpDownloadProgress"));
    m_pace = f.findChild<QLabel*>(QStringLiteral("LpDownloadPace"));
    m_end = f.findChild<QLabel*>(QStringLiteral("LpDownloadEnd"));
    m_openFolder = f.findChild<QPushButton*>(QStringLiteral("LpOpenFolder"));
    connect(&session.download, &LpDownload::rowsSaved, this, &LoadProfileBinding::ShowProgress);
    connect(&session.download, &LpDownload::finished, this, [this](LpEnd end, const QString& why) {
        if (end == LpEnd::FileError)
            m_failure->setText(why);
        ShowEnd(end);
    });
    connect(m_openFolder, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(m_session.download.LpFilePath).absolutePath()));
    });
}

// A new channel count makes the meter discard the group's records, so the operator is asked
// first; an interval or channel codes alone keep them. Every list of the group is sent, read
// when the command is served.
void LoadProfileBinding::SendGroupSetting(int group)
{
    const QList<QWidget*> fields = GroupFields(m_form, group);
    const bool sameCount = FieldText(fields[0]) == m_form.Text_LP_Data_Counter(group)->text();
    const Setting setting = kGroupSettings[group];
    RequestConfirmed(m_session, setting, FieldsSource(setting, fields), [this, setting, sameCount] {
        return sameCount || m_prompts.Confirm(SpecOf(setting).caption, SpecOf(setting).question);
    });
}

void LoadProfileBinding::ClearGroupData(int group)
{
    const SettingSpec& clear = SpecOf(kGroupClears[group]);
    RequestConfirmed(m_session, clear.setting, FixedValue({}),
                     [this, &clear] { return m_prompts.Confirm(clear.caption, clear.question); });
}

// The list reads "1" or "2": group index 0 only for a text that leads with 1.
void LoadProfileBinding::ChooseDownloadGroup()
{
    m_session.numberLists.ChooseGroup(LeadingValue(m_form.Combo_LP_Read_Group_Sel->currentText()) == 1 ? 0 : 1);
}

void LoadProfileBinding::Command8_Click()
{
    m_failure->clear();
    const auto first = WholeNumber32Of(m_form.Combo_LP_Start_No->currentText());
    const auto last = WholeNumber32Of(m_form.Combo_LP_Stop_No->currentText());
    const LpStart start = first && last ? m_session.download.Start(m_session.numberLists.Group(), *first, *last)
                                        : LpStart::NoRange;
    if (const QString message = LpStartMessage(start); !message.isEmpty())
        m_prompts.Critical(message);
    if (start == LpStart::FileError)
        m_failure->setText(m_session.Status());
    if (start == LpStart::Started || start == LpStart::Continued)
        BeginProgress();
}

// A continued download counts from where it goes on: its rate is this run's.
void LoadProfileBinding::BeginProgress()
{
    const LpDownload& download = m_session.download;
    m_from = download.LpCurrentIndex;
    m_elapsed.start();
    m_progress->setRange(0, download.LpStopIndex + 1 - m_from);
    m_end->hide();
    m_openFolder->hide();
    ShowProgress();
}

void LoadProfileBinding::ShowProgress()
{
    const int total = m_progress->maximum();
    // The last step counts past the range's end.
    const int done = std::min(m_session.download.LpCurrentIndex - m_from, total);
    m_progress->setValue(done);
    m_pace->setText(PaceText(done, total, m_elapsed.elapsed()));
}

void LoadProfileBinding::ShowEnd(LpEnd end)
{
    const QString path = m_session.download.LpFilePath;
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    const QString shown = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
    m_end->setText(end == LpEnd::Finished ? QStringLiteral("Saved to %1").arg(shown)
                                          : QStringLiteral("The rows read so far are in %1").arg(shown));
    m_end->show();
    m_openFolder->show();
}

// A number beyond the intervals the meter holds for the chosen group goes back to the first.
void LoadProfileBinding::CheckAgainstValid(QComboBox* list)
{
    const auto number = WholeNumber32Of(list->currentText());
    if (number && *number > m_session.download.ValidIntervals(m_session.numberLists.Group())) {
        m_prompts.Critical(QStringLiteral("Over Interval Valid limit"));
        list->setEditText(QStringLiteral("1"));
    }
}

void LoadProfileBinding::ShowFace(LpDownload::Face face, const QString& caption)
{
    m_form.Command8->setText(caption);
    if (face == LpDownload::Face::Normal)
        ClearBackground(m_form.Command8);
    else
        SetBackground(m_form.Command8, face == LpDownload::Face::Reading ? kOnLineColour : kResumableColour);
}
