#pragma once

#include "loadprofile/LpDownload.h"
#include "ui/LeaveChecks.h"

#include <QObject>

class MainForm;
class MeterSession;
class OperatorPrompts;
class QComboBox;

// Binds the "Load Profile" tab to the session: each group's set-up and clear, the group chosen
// for download, the download's range with its checks, and the face of its button.
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

    MainForm& m_form;
    MeterSession& m_session;
    OperatorPrompts& m_prompts;
    LeaveChecks m_checks;
};
