#pragma once

#include <QByteArray>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Where and how to reach the meter: the options every command that talks to it shares, with
// the defaults of the window's lists.
struct LineOptions {
    QString port;               // a device path, a port number as the window counts, "sim", "tcp://host:port"
    QString baudRate;           // "9600" or "19200"
    QString stopBits;           // "1" or "2"
    QList<int> addresses{15};   // each kLowestAddress to kHighestAddress, once, in the order given
    int replyTimeoutMs = 2000;  // one attempt's wait for its reply
    bool verbose = false;       // each frame on the line to stderr, as the traffic monitor shows it
};

// The line options a command takes and the defaults its help names: the parser and the help
// are made from this one declaration, so that the help offers nothing the command refuses.
struct MeterLine {
    enum Addresses { OneAddress, AddressList, NoAddress }; // NoAddress: the command goes through them itself
    Addresses addresses = OneAddress;
    QString baudDefault = QStringLiteral("19200"); // as the help says it
    double timeoutDefault = 2;                      // seconds
    bool frames = true;                             // takes --verbose
    int attempts = 5;                               // of each request, as the help says it
};

// The parser of one command: its own options and, for a command that talks to the meter, the
// line options. Parse errors and --help are answered here, so that each command only runs.
class CommandLine {
public:
    // `usage` is the command as typed ("read", "lp download"); `description` says what it does.
    // A command that talks to the meter names the line options it takes.
    CommandLine(const QString& usage, const QString& description, const std::optional<MeterLine>& meterLine);

    void Add(const QCommandLineOption& option) { m_parser.addOption(option); }
    void AddPositional(const QString& name, const QString& description, const QString& syntax = QString())
    {
        m_parser.addPositionalArgument(name, description, syntax);
        m_takesWords = true;
    }
    // Parses the arguments after the command's name. Nothing when the command may run;
    // otherwise the exit status: 0 after --help, 2 after a message on stderr. An option given
    // an empty value, and a word for a command that takes none, are refused.
    std::optional<int> Parse(const QStringList& arguments);

    bool IsSet(const QCommandLineOption& option) const { return m_parser.isSet(option); }
    // Whether a line option ("baud", "timeout") was given rather than left at its default.
    bool LineOptionSet(const QString& name) const { return m_parser.isSet(name); }
    QString Value(const QCommandLineOption& option) const { return m_parser.value(option); }
    QStringList Positional() const { return m_parser.positionalArguments(); }
    // The line options, checked; nothing after a message on stderr. Without --port the port
    // is the environment's QX5820_PORT.
    std::optional<LineOptions> Line() const;

private:
    std::optional<int> Refused(const QString& message) const;
    std::optional<QString> Unexpected() const;

    QString m_usage;
    QCommandLineParser m_parser;
    QCommandLineOption m_help;
    std::optional<MeterLine> m_meterLine;
    bool m_takesWords = false;
};

// --count of a command that repeats each tick.
extern const QCommandLineOption kTickCount;
// The ticks --count asks for, -1 (until interrupted) when not given; nothing after a message
// on stderr.
std::optional<qint64> TickCount(const CommandLine& line);

// Writes "qx5820: <message>" to stderr and returns `status`, for `return Fail(...)`.
int Fail(int status, const QString& message);
// Writes `bytes` to stdout at once, for a script reading as it goes: kExitOk, or kExitFileError
// after a message (a closed pipe, a full disk).
int PrintOut(const QByteArray& bytes);
