#include "ui/MainForm.h"

#include "session/MeterSession.h"
#include "ui/ControlFactory.h"
#include "ui/FindMeterDialog.h"
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
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTabWidget>
#include <QTextDocument>
#include <QVBoxLayout>
#include <QtMath>

#include <algorithm>

using namespace Controls;

namespace {

// Room for a few echoed request frames without pushing the tabs. The extra half line keeps the
// last one whole, whatever leading the font adds.
constexpr double kFrameEchoLines = 3.5;

// The size the window was laid out for; a smaller screen gets what it has room for.
constexpr QSize kPreferredSize{1280, 800};

// On a small screen only the page scrolls, and only up and down: the connection bar and the
// status line, where write results and exceptions appear, stay in view. The pages are laid out
// for a laptop's width, so the area is never narrower than its page: a sideways bar would only
// come and go with the vertical one.
QScrollArea* Scrolling(QWidget* page)
{
    auto* scroll = new QScrollArea;
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidgetResizable(true);
    scroll->setWidget(page);
    scroll->setMinimumWidth(page->minimumSizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());
    return scroll;
}

} // namespace

MainForm::MainForm(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(QStringLiteral("MainForm"));
    setWindowTitle(QStringLiteral("Norvale QX-5820 setting V1.0"));

    tabs = new QTabWidget;
    tabs->setObjectName(QStringLiteral("tabs"));
    tabs->setAccessibleName(QStringLiteral("Real-time data, meter settings and load profile"));
    tabs->addTab(Scrolling(BuildRealTimeTab()), QStringLiteral("Real time Data"));
    tabs->addTab(Scrolling(BuildMeterSettingTab()), QStringLiteral("Meter Settig"));
    tabs->addTab(Scrolling(BuildLoadProfileTab()), QStringLiteral("Load Profile"));
    tabs->addTab(trafficView = new TrafficView, QStringLiteral("Traffic"));

    auto* central = new QWidget;
    auto* layout = new QVBoxLayout(central);
    layout->addWidget(BuildConnectionFrame());
    layout->addWidget(tabs, 1);
    layout->addWidget(BuildStatusArea());
    setCentralWidget(central);
    FitOnScreen();
    m_binding = std::make_unique<FormBinding>(*this);
    // Tabs built on the session, so added once it exists.
    tabs->addTab(new TrendView(session().poll), QStringLiteral("Trends"));
    tabs->addTab(new LpPlotView(session().download), QStringLiteral("Load Profile Plot"));
    tabs->addTab(new PhasorView(session().poll, session().freshness), QStringLiteral("Phasors and wiring"));
}

MainForm::~MainForm() = default;

// Fitted anew on each start; the title bar is not yet there to measure, so the style's is taken.
void MainForm::FitOnScreen()
{
    const QRect available = screen()->availableGeometry();
    const int titleBar = style()->pixelMetric(QStyle::PM_TitleBarHeight);
    resize(kPreferredSize.boundedTo(available.size() - QSize(0, titleBar)));
    move(available.x() + std::max(0, (available.width() - width()) / 2),
         available.y() + std::max(0, (available.height() - titleBar - height()) / 2));
}

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
    cmd_FindMeter = Button(QStringLiteral("cmd_FindMeter"), QStringLiteral("Find meter…"),
                           QStringLiteral("Scan the port for a meter's address and baud rate"));
    connect(cmd_FindMeter, &QPushButton::clicked, this, &MainForm::FindMeter);
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
    txt_OffLineReason->setPalette(note);
    ShowAsWarning(*txt_OffLineReason, QPalette::Text);

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
    row->addWidget(cmd_FindMeter);
    return frame;
}

// The scan needs the port to itself: on line, the tool goes off line first.
void MainForm::FindMeter()
{
    MeterSession& meterSession = session();
    if (meterSession.connection.bOnLine.isTrue())
        meterSession.ToggleOnLine(Combo_Modbus_add_sel->currentText());
    QString error;
    const QString device = meterSession.connection.ChosenDevice(&error);
    if (device.isEmpty()) {
        QMessageBox::warning(this, QStringLiteral("Find meter"), QStringLiteral("The port cannot be used: %1").arg(error));
        return;
    }
    FindMeterDialog dialog(device, Combo_StopBit->currentText(), this);
    if (dialog.exec() != QDialog::Accepted || !dialog.Chosen())
        return;
    // Picked as the operator would: the lists' handlers pass the choice to the session.
    const QString address = QString::number(dialog.Chosen()->address);
    if (Combo_Modbus_add_sel->findText(address) < 0)
        Combo_Modbus_add_sel->addItem(address);
    Combo_Modbus_add_sel->setCurrentIndex(Combo_Modbus_add_sel->findText(address));
    Combo_BaudRate_Sel->setCurrentIndex(Combo_BaudRate_Sel->findText(dialog.Chosen()->baudRate));
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
