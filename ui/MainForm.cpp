#include "ui/MainForm.h"

#include "ui/ControlFactory.h"
#include "ui/FormBinding.h"
#include "ui/LpPlotView.h"
#include "ui/PhasorView.h"
#include "ui/StateColours.h"
#include "ui/TrafficView.h"
#include "ui/TrendView.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QTabWidget>
#include <QTextDocument>
#include <QVBoxLayout>
#include <QtMath>

using namespace Controls;

namespace {

// Room for a few echoed request frames without pushing the tabs. The extra half line keeps the
// last one whole, whatever leading the font adds.
constexpr double kFrameEchoLines = 3.5;

} // namespace

MainForm::MainForm(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("MainForm"));
    setWindowTitle(QStringLiteral("Norvale QX-5820 setting V1.0"));

    tabs = new QTabWidget;
    tabs->setObjectName(QStringLiteral("tabs"));
    tabs->setAccessibleName(QStringLiteral("Real-time data, meter settings and load profile"));
    tabs->addTab(BuildRealTimeTab(), QStringLiteral("Real time Data"));
    tabs->addTab(BuildMeterSettingTab(), QStringLiteral("Meter Settig"));
    tabs->addTab(BuildLoadProfileTab(), QStringLiteral("Load Profile"));
    tabs->addTab(trafficView = new TrafficView, QStringLiteral("Traffic"));

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(BuildConnectionFrame());
    layout->addWidget(tabs, 1);
    layout->addWidget(BuildStatusArea());
    // On a small screen (a 1366×768 laptop less its task bar) the content scrolls instead of
    // being clipped; on a large one it grows up to the sizes its fields are given.
    auto* scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("MainScroll"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(central);
    setCentralWidget(scroll);
    resize(1280, 800);
    m_binding = std::make_unique<FormBinding>(*this);
    // Tabs built on the session, so added once it exists.
    tabs->addTab(new TrendView(session().poll), QStringLiteral("Trends"));
    tabs->addTab(new LpPlotView(session().download), QStringLiteral("Load Profile Plot"));
    tabs->addTab(new PhasorView(session().poll), QStringLiteral("Phasors and wiring"));
}

MainForm::~MainForm() = default;

MeterSession& MainForm::session()
{
    return m_binding->session;
}

PortListBinding& MainForm::portList()
{
    return m_binding->portList;
}

void MainForm::closeEvent(QCloseEvent* event)
{
    m_binding->session.Form_Unload();
    event->accept();
}

QWidget* MainForm::BuildConnectionFrame()
{
    Combo_CommPort = PortList(QStringLiteral("Combo_CommPort"), QStringLiteral("Serial port of the PC"));
    Combo_BaudRate_Sel = ChoiceList(QStringLiteral("Combo_BaudRate_Sel"), QStringLiteral("Baud rate of the PC port"));
    Combo_StopBit = ChoiceList(QStringLiteral("Combo_StopBit"), QStringLiteral("Stop bits of the PC port"));
    Combo_Modbus_add_sel = ChoiceList(QStringLiteral("Combo_Modbus_add_sel"),
        QStringLiteral("Modbus address of the meter to talk to"), Typing::Typed);
    On_Line = Button(QStringLiteral("On_Line"), QStringLiteral("On Line"), QStringLiteral("Go on line or off line"));
    txt_Online = TextReadout(QStringLiteral("txt_Online"), QStringLiteral("Connection state"));
    txt_Online->setText(QStringLiteral("Off Line"));
    txt_Online->setAlignment(Qt::AlignCenter);
    SetBackground(txt_Online, kOffLineColour);
    txt_OffLineReason = TextReadout(QStringLiteral("txt_OffLineReason"), QStringLiteral("Why the tool went off line"));
    txt_OffLineReason->setMinimumWidth(txt_OffLineReason->fontMetrics().averageCharWidth() * 20);
    // A note beside the state rather than a field: empty while all is well.
    txt_OffLineReason->setFrame(false);
    QPalette note = txt_OffLineReason->palette();
    note.setColor(QPalette::Base, palette().color(QPalette::Window));
    // Dark red on a light window, light red on a dark one.
    const bool darkTheme = palette().color(QPalette::Window).lightness() < 128;
    note.setColor(QPalette::Text, darkTheme ? QColor(0xFF, 0x80, 0x80) : QColor(0xA0, 0x00, 0x00));
    txt_OffLineReason->setPalette(note);

    auto* frame = new QGroupBox(QStringLiteral("Connection"));
    auto* row = new QHBoxLayout(frame);
    row->addWidget(Caption(QStringLiteral("&Port"), Combo_CommPort));
    row->addWidget(Combo_CommPort);
    row->addSpacing(12);
    row->addWidget(Caption(QStringLiteral("&Baud rate"), Combo_BaudRate_Sel));
    row->addWidget(Combo_BaudRate_Sel);
    row->addSpacing(12);
    row->addWidget(Caption(QStringLiteral("&Stop bit"), Combo_StopBit));
    row->addWidget(Combo_StopBit);
    row->addSpacing(12);
    row->addWidget(Caption(QStringLiteral("Modbus &address"), Combo_Modbus_add_sel));
    row->addWidget(Combo_Modbus_add_sel);
    row->addSpacing(24);
    row->addWidget(On_Line);
    row->addWidget(txt_Online);
    row->addWidget(txt_OffLineReason, 1);
    return frame;
}

QWidget* MainForm::BuildStatusArea()
{
    Text6 = TextReadout(QStringLiteral("Text6"), QStringLiteral("Communication status"));
    Text12 = NoteBox(QStringLiteral("Text12"), QStringLiteral("Request frames sent to the meter"));
    Text12->setFixedHeight(qCeil(Text12->fontMetrics().lineSpacing() * kFrameEchoLines
                                 + 2 * Text12->document()->documentMargin())
                           + 2 * Text12->frameWidth());
    chk_ShowFrames = CheckBox(QStringLiteral("chk_ShowFrames"), QStringLiteral("Show request frames"),
                              QStringLiteral("Show the request frames sent to the meter"));

    auto* area = new QWidget;
    auto* grid = new QGridLayout(area);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(Caption(QStringLiteral("Status"), Text6), 0, 0);
    grid->addWidget(Text6, 0, 1);
    grid->addWidget(chk_ShowFrames, 0, 2);
    grid->addWidget(Caption(QStringLiteral("Requests"), Text12), 1, 0, Qt::AlignTop);
    grid->addWidget(Text12, 1, 1, 1, 2);
    grid->setColumnStretch(1, 1);
    return area;
}
