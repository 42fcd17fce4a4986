#include "ui/WindowOptions.h"

#include "connection/PortCatalog.h"
#include "ports/MeterChoices.h"
#include "session/MeterSession.h"
#include "ui/MainForm.h"

#include <QComboBox>
#include <QCommandLineParser>
#include <QCoreApplication>

namespace {

constexpr int kBadOption = 2;

WindowStart Refuse(const QString& why)
{
    const QString program = QCoreApplication::applicationName();
    return {std::nullopt, kBadOption, QStringLiteral("%1: %2\nTry '%1 --help'.\n").arg(program, why)};
}

// "9600 or 19200", "1 to 250".
QString Allowed(const QStringList& entries)
{
    return entries.size() > 2 ? QStringLiteral("%1 to %2").arg(entries.first(), entries.last())
                              : entries.join(QStringLiteral(" or "));
}

// Every address the tool can reach a meter at, also those beyond the address list's entries,
// which the operator types.
QStringList TalkAddresses()
{
    return NumberTexts(kLowestAddress, kHighestAddress);
}

// Picks the entry that reads `address`, or types it when the list has none: either way the
// address is the one the session talks to.
void ChooseAddress(MainForm& form, const QString& address)
{
    QComboBox* list = form.Combo_Modbus_add_sel;
    if (const int entry = list->findText(address); entry >= 0) {
        list->setCurrentIndex(entry);
        return;
    }
    list->setEditText(address);
    form.session().ChooseAddress(address);
}

} // namespace

WindowStart ReadWindowOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    // Qt's own "-platform NAME" is still among the arguments before the application is made.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral(
        "Sets up and reads out a QX-5820 power meter over its serial line. The options choose the port,\n"
        "line settings and meter address the window starts with; the operator can change them there."));
    // Not addHelpOption(): its "--help-all" offers Qt's own options, and the window takes none
    // but -platform.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Displays this help."));
    parser.addOption(help);
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption port(QStringLiteral("port"),
        QStringLiteral("Port: a device path, a port number as the port list counts them, sim for the "
                       "built-in simulated meter, or tcp://host:port for a serial device server."),
        QStringLiteral("PORT"));
    const QCommandLineOption baud(QStringLiteral("baud"),
        QStringLiteral("Baud rate of the PC's port: %1.").arg(Allowed(BaudRateTexts())), QStringLiteral("RATE"));
    const QCommandLineOption stopBits(QStringLiteral("stop-bits"),
        QStringLiteral("Stop bits of the PC's port: %1.").arg(Allowed(StopBitTexts())), QStringLiteral("BITS"));
    const QCommandLineOption address(QStringLiteral("address"),
        QStringLiteral("Modbus address of the meter: %1.").arg(Allowed(TalkAddresses())), QStringLiteral("ADDRESS"));
    const QCommandLineOption simulated(QStringLiteral("simulated-meter"), QStringLiteral("The same as --port sim."));
    QCommandLineOption platform(QStringLiteral("platform"), QString(), QStringLiteral("NAME"));
    platform.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({port, baud, stopBits, address, simulated, platform});

    if (!parser.parse(arguments))
        return Refuse(parser.errorText());
    if (parser.isSet(help))
        return {std::nullopt, 0, parser.helpText()};
    if (parser.isSet(version)) {
        return {std::nullopt, 0, QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                               QCoreApplication::applicationVersion())};
    }
    if (!parser.positionalArguments().isEmpty())
        return Refuse(QStringLiteral("unexpected argument \"%1\"").arg(parser.positionalArguments().first()));

    WindowOptions options{parser.value(port), parser.value(baud), parser.value(stopBits), parser.value(address)};
    if (parser.isSet(simulated)) {
        if (parser.isSet(port) && options.port != QLatin1String("sim"))
            return Refuse(QStringLiteral("--simulated-meter and --port %1 name two ports").arg(options.port));
        options.port = QStringLiteral("sim");
    }
    QList<PortEntry> entries = PortCatalog::Scan();
    if (QString error; parser.isSet(port) && !PortCatalog::Locate(entries, options.port, &error))
        return Refuse(QStringLiteral("--port: %1").arg(error));
    const struct {
        const QCommandLineOption& option;
        QStringList allowed;
    } lists[] = {{baud, BaudRateTexts()}, {stopBits, StopBitTexts()}, {address, TalkAddresses()}};
    for (const auto& list : lists) {
        const QString value = parser.value(list.option);
        if (parser.isSet(list.option) && !list.allowed.contains(value)) {
            return Refuse(QStringLiteral("--%1: \"%2\" is not %3")
                              .arg(list.option.names().first(), value, Allowed(list.allowed)));
        }
    }
    return {options, 0, QString()};
}

bool ApplyWindowOptions(MainForm& form, const WindowOptions& options, QString* error)
{
    if (!options.port.isEmpty() && !form.ChoosePort(options.port, error))
        return false;
    const auto pick = [](QComboBox* list, const QString& text) {
        if (!text.isEmpty())
            list->setCurrentIndex(list->findText(text));
    };
    pick(form.Combo_BaudRate_Sel, options.baudRate);
    pick(form.Combo_StopBit, options.stopBits);
    if (!options.address.isEmpty())
        ChooseAddress(form, options.address);
    return true;
}
