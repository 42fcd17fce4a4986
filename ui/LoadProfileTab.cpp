#include "ui/MainForm.h"

#include "ui/ControlFactory.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Controls;

namespace {

// Channel counts and codes have two digits, interval counts up to five.
constexpr int kCodeDigits = 2;
constexpr int kCountDigits = 5;

// Setting elements 0 and 1 precede the channel codes.
constexpr int kFirstChannelElement = 2;

QString GroupName(int group)
{
    return QStringLiteral("Group %1").arg(group);
}

QString ChannelHeading(int channel)
{
    return QStringLiteral("Ch %1").arg(channel);
}

// The configuration of one recording group: channel count, interval and one code per channel,
// above the buttons that send it and that clear the group's records in the meter.
QWidget* BuildGroupFrame(int group, ControlArray<QComboBox>& settings, int channels, QPushButton* send,
                         QPushButton* clear)
{
    const QString name = GroupName(group);
    // Every entry is a number of at most two digits: fourteen lists side by side stay narrow
    // enough for a laptop screen.
    const auto twoDigitList = [](const QString& accessibleName) {
        QComboBox* list = ChoiceList(QString(), accessibleName);
        list->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        list->setMinimumContentsLength(2);
        return list;
    };
    settings.add(0, twoDigitList(name + QStringLiteral(" number of channels")));
    settings.add(1, twoDigitList(name + QStringLiteral(" recording interval, minutes")));
    for (int channel = 1; channel <= channels; ++channel)
        settings.add(kFirstChannelElement + channel - 1, twoDigitList(name + QStringLiteral(" channel %1 code").arg(channel)));

    auto* frame = new QGroupBox(QStringLiteral("Load Profile ") + name + QStringLiteral(" Setting"));
    auto* grid = new QGridLayout(frame);
    grid->addWidget(Caption(QStringLiteral("Channels"), settings(0)), 0, 0);
    grid->addWidget(Caption(QStringLiteral("Interval (min)"), settings(1)), 0, 1);
    for (int element : settings.indices()) {
        if (element >= kFirstChannelElement)
            grid->addWidget(Caption(ChannelHeading(element - 1), settings(element)), 0, element);
        grid->addWidget(settings(element), 1, element);
    }
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(send);
    buttons->addWidget(clear);
    buttons->addStretch(1);
    grid->addLayout(buttons, 2, 0, 1, kFirstChannelElement + channels);
    grid->setColumnStretch(kFirstChannelElement + channels, 1);
    return frame;
}

QWidget* BuildGroupFrames(MainForm& form)
{
    form.Comm_LP_G1_Set = MeterButton(QStringLiteral("Comm_LP_G1_Set"), QStringLiteral("Setting"),
        QStringLiteral("Write the group 1 configuration to the meter"));
    form.Comm_Clr_G1_Data = MeterButton(QStringLiteral("Comm_Clr_G1_Data"), QStringLiteral("Clear Group1 Data"),
        QStringLiteral("Clear the recorded data of group 1 in the meter"));
    form.Comm_LP_G2_Set = MeterButton(QStringLiteral("Comm_LP_G2_Set"), QStringLiteral("Setting"),
        QStringLiteral("Write the group 2 configuration to the meter"));
    form.Comm_Clr_G2_Data = MeterButton(QStringLiteral("Comm_Clr_G2_Data"), QStringLiteral("Clear Group2 Data"),
        QStringLiteral("Clear the recorded data of group 2 in the meter"));

    auto* frames = new QWidget;
    auto* column = new QVBoxLayout(frames);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(BuildGroupFrame(1, form.Combo_G1_Setting, 12, form.Comm_LP_G1_Set, form.Comm_Clr_G1_Data));
    column->addWidget(BuildGroupFrame(2, form.Combo_G2_Setting, 8, form.Comm_LP_G2_Set, form.Comm_Clr_G2_Data));
    return frames;
}

// What the meter reports for both groups, one row per group: element 0 of every family is
// group 1, element 1 group 2; the channel codes have one family per group.
QWidget* BuildStatusFrame(MainForm& form)
{
    struct Column {
        QString heading;
        ControlArray<QLineEdit>* fields;
        QString spoken;
    };
    const QList<Column> counts{
        {"Data Counter", &form.Text_LP_Data_Counter, "number of channels reported by the meter"},
        {"Interval", &form.Text_LP_interval, "interval reported by the meter, minutes"},
        {"Valid intervals", &form.Text_Valid_int_num, "number of valid recorded intervals"},
        {"Max intervals", &form.Text_Max_int_num, "maximum number of recorded intervals"},
    };
    const QList<QPair<ControlArray<QLineEdit>*, int>> codes{{&form.Text_LP_G1_Data, 12}, {&form.Text_LP_G2_Data, 8}};

    auto* frame = new QGroupBox(QStringLiteral("Load Profile Status in the Meter"));
    auto* grid = new QGridLayout(frame);
    for (int c = 0; c < counts.size(); ++c)
        grid->addWidget(Heading(counts[c].heading), 0, c + 1, Qt::AlignCenter);
    for (int channel = 1; channel <= codes.first().second; ++channel)
        grid->addWidget(Heading(ChannelHeading(channel)), 0, counts.size() + channel, Qt::AlignCenter);

    for (int element = 0; element < codes.size(); ++element) {
        const QString name = GroupName(element + 1);
        const int row = element + 1;
        for (int c = 0; c < counts.size(); ++c) {
            auto* field = counts[c].fields->add(element,
                NumberReadout(QString(), name + QLatin1Char(' ') + counts[c].spoken, kCountDigits));
            grid->addWidget(field, row, c + 1);
        }
        const auto& [channelCodes, channels] = codes[element];
        for (int k = 0; k < channels; ++k) {
            auto* field = channelCodes->add(k, NumberReadout(QString(),
                name + QStringLiteral(" channel %1 code reported by the meter").arg(k + 1), kCodeDigits));
            grid->addWidget(field, row, counts.size() + 1 + k);
        }
        grid->addWidget(Caption(name, form.Text_LP_Data_Counter(element)), row, 0);
    }
    grid->setColumnStretch(counts.size() + codes.first().second + 1, 1);
    return frame;
}

QWidget* BuildLegendFrame(MainForm& form)
{
    form.txtLPindex = NoteBox(QStringLiteral("txtLPindex"), QStringLiteral("Load profile channel codes"));
    form.cmdLPindexon = Button(QStringLiteral("cmdLPindexon"), QStringLiteral("Data Item List"),
        QStringLiteral("Show or hide the list of load profile channel codes"));
    auto* frame = new QGroupBox(QStringLiteral("Channel Codes"));
    auto* column = new QVBoxLayout(frame);
    column->addWidget(form.cmdLPindexon);
    column->addWidget(form.txtLPindex, 1);
    return frame;
}

QWidget* BuildDownloadFrame(MainForm& form)
{
    form.Combo_LP_Read_Group_Sel = ChoiceList(QStringLiteral("Combo_LP_Read_Group_Sel"),
        QStringLiteral("Load profile group to download"));
    form.Combo_LP_Start_No = ChoiceList(QStringLiteral("Combo_LP_Start_No"),
        QStringLiteral("First interval to download"), Typing::Typed);
    form.Combo_LP_Stop_No = ChoiceList(QStringLiteral("Combo_LP_Stop_No"),
        QStringLiteral("Last interval to download"), Typing::Typed);
    form.Command8 = MeterButton(QStringLiteral("Command8"), QStringLiteral("Read and Save"),
        QStringLiteral("Download the intervals into a CSV file"));

    auto* frame = new QGroupBox(QStringLiteral("Load Profile Download"));
    auto* grid = new QGridLayout(frame);
    grid->addWidget(Caption(QStringLiteral("Group"), form.Combo_LP_Read_Group_Sel), 0, 0);
    grid->addWidget(form.Combo_LP_Read_Group_Sel, 0, 1);
    grid->addWidget(Caption(QStringLiteral("Start no"), form.Combo_LP_Start_No), 0, 2);
    grid->addWidget(form.Combo_LP_Start_No, 0, 3);
    grid->addWidget(Caption(QStringLiteral("Stop no"), form.Combo_LP_Stop_No), 0, 4);
    grid->addWidget(form.Combo_LP_Stop_No, 0, 5);
    grid->addWidget(form.Command8, 1, 0, 1, 2);
    // How far the download is, beside the button; the file it wrote once it ends. The end's row
    // takes no room until then: the tab fits a laptop screen.
    auto* progress = new QProgressBar;
    progress->setObjectName(QStringLiteral("LpDownloadProgress"));
    progress->setAccessibleName(QStringLiteral("Intervals downloaded"));
    progress->setFormat(QStringLiteral("%v / %m"));
    progress->setValue(0);
    grid->addWidget(progress, 1, 2, 1, 2);
    auto* pace = new QLabel;
    pace->setObjectName(QStringLiteral("LpDownloadPace"));
    pace->setAccessibleName(QStringLiteral("Download rate and time left"));
    grid->addWidget(pace, 1, 4, 1, 2);
    auto* end = new QLabel;
    end->setObjectName(QStringLiteral("LpDownloadEnd"));
    end->setWordWrap(true);
    end->setTextInteractionFlags(Qt::TextSelectableByMouse);
    end->setVisible(false);
    grid->addWidget(end, 2, 0, 1, 5);
    auto* openFolder = Button(QStringLiteral("LpOpenFolder"), QStringLiteral("Open folder"),
        QStringLiteral("Open the folder holding the downloaded CSV file"));
    openFolder->setVisible(false);
    grid->addWidget(openFolder, 2, 5);
    // Why the last download failed (a full disk, a refused file): the poll's next tick rewrites
    // the status line, this stays until the button is pressed again.
    auto* failure = new QLabel;
    failure->setObjectName(QStringLiteral("LpDownloadFailure"));
    failure->setWordWrap(true);
    failure->setTextInteractionFlags(Qt::TextSelectableByMouse);
    ShowAsWarning(*failure, QPalette::WindowText);
    grid->addWidget(failure, 3, 0, 1, 6);
    return frame;
}

QWidget* BuildInternalFrame(MainForm& form)
{
    // The viewer's two lists are enabled with the meter buttons when the tool goes on line.
    form.Combo_LP_Read_Group_Sel1 = ChoiceList(QStringLiteral("Combo_LP_Read_Group_Sel1"),
        QStringLiteral("Internal load profile viewer: group"));
    form.Combo_LP_Read_Group_Sel1->setEnabled(false);
    form.Combo4 = ChoiceList(QStringLiteral("Combo4"), QStringLiteral("Internal load profile viewer: selection"));
    form.Combo4->setEnabled(false);
    form.Command7 = MeterButton(QStringLiteral("Command7"), QStringLiteral("Internal LP Data"),
        QStringLiteral("Open the internal load profile viewer"));
    // The only meter button that starts enabled; going on line never enables it again.
    form.Command11 = Button(QStringLiteral("Command11"), QStringLiteral("Read LP Data"),
        QStringLiteral("Read internal load profile data"));

    auto* frame = new QGroupBox(QStringLiteral("Internal LP Data"));
    auto* grid = new QGridLayout(frame);
    grid->addWidget(Caption(QStringLiteral("Group"), form.Combo_LP_Read_Group_Sel1), 0, 0);
    grid->addWidget(form.Combo_LP_Read_Group_Sel1, 0, 1);
    grid->addWidget(Caption(QStringLiteral("Selection"), form.Combo4), 0, 2);
    grid->addWidget(form.Combo4, 0, 3);
    grid->addWidget(form.Command7, 1, 0, 1, 2);
    grid->addWidget(form.Command11, 1, 2, 1, 2);
    return frame;
}

} // namespace

QWidget* MainForm::BuildLoadProfileTab()
{
    auto* lower = new QHBoxLayout;
    lower->addWidget(BuildDownloadFrame(*this));
    lower->addWidget(BuildInternalFrame(*this));
    lower->addStretch(1);

    auto* left = new QVBoxLayout;
    left->addWidget(BuildGroupFrames(*this));
    left->addWidget(BuildStatusFrame(*this));
    left->addLayout(lower);
    left->addStretch(1);

    auto* tab = new QWidget;
    auto* columns = new QHBoxLayout(tab);
    columns->addLayout(left, 1);
    columns->addWidget(BuildLegendFrame(*this));
    return tab;
}
