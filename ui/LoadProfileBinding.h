#pragma once

#include "loadprofile/LpDownload.h"
#include "ui/LeaveChecks.h"

#include <QElapsedTimer>
#include <QObject>

class MainForm;
class MeterSession;
class OperatorPrompts;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QWidget;

// Group `group`'s lists (0 for group 1): the channel count, the interval, then the codes.
QList<QWidget*> GroupFields(const MainForm& form, int group);

// Binds the "Load Profile" tab to the session: each group's set-up and clear, the group chosen
// for download, the download's range with its checks, the face of its button, its progress with
// the rate and the time left, the file it wrote, and why the last download failed, which stays
// beside it until it is pressed again.
class LoadProfileBinding : public QObject {
    Q_OBJECT
public:
    LoadProfileBinding(MainForm& form, MeterSession& session, OperatorPrompts& prompts);

private:
    void SendGroupSetting(int group);
    void ClearGroupData(int group);
    void ChooseDownloadGroup();
    void Command8_Click();
    void CheckAgainstValid(QComboBox* list);
    void ShowFace(LpDownload::Face face, const QString& caption);
    void BeginProgress();
    void ShowProgress();
    void ShowEnd(LpEnd end);

    MainForm& m_form;
    MeterSession& m_session;
    OperatorPrompts& m_prompts;
    LeaveChecks m_checks;
    QLabel* m_failure = nullptr; // beside the button: why the last download failed
    QProgressBar* m_progress = nullptr;
    QLabel* m_pace = nullptr;
    QLabel* m_end = nullptr;
    QPushButton* m_openFolder = nullptr;
    QElapsedTimer m_elapsed;  // since this run of the download started
    qint32 m_from = 0;        // the index it started at
};
