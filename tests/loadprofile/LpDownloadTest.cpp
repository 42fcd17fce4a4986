// Load-profile downloads against the simulated meter: the steps and texts of a range, the day's
// file and its header blocks, safe file names from hostile identifications, a folder that
// cannot be written, a disk that fills up, and downloads broken by faults and continued until
// the file holds every interval once; links planted in the folder, and a progress record that
// cannot be written.
#include "LpFileRows.h"
#include "MeterOnLine.h"
#include "loadprofile/LpCsvFile.h"
#include "loadprofile/LpProgressRecord.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using sim::Fault;

namespace {

constexpr int kDownloadMs = 30000;

// Writes beyond `bytes` into any file fail, as on a full disk (with EFBIG rather than ENOSPC),
// while this lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = rlim_t(bytes);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
};

QList<QByteArray> Lines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> lines = file.readAll().split('\n');
    lines.removeLast(); // after the last line end
    for (QByteArray& line : lines)
        line.chop(1); // the carriage return
    return lines;
}

} // namespace

Q_DECLARE_METATYPE(Via)

class LpDownloadTest : public QObject {
    Q_OBJECT
private slots:
    void init() { QVERIFY(begin(Via::PseudoTerminal)); }
    void cleanup()
    {
        m_on.reset();
        QDir(m_folder.filePath("LP Data")).removeRecursively();
    }

    // Each step asks for the number of its first interval and at most four records; the last
    // step ends the download with the stop number, counted from 1.
    void aRangeIsReadInStepsOfFour_data()
    {
        QTest::addColumn<int>("start");
        QTest::addColumn<int>("stop");
        QTest::addColumn<QList<int>>("pointers");
        QTest::newRow("start = stop") << 7 << 7 << QList<int>{7};
        QTest::newRow("five in two steps") << 3 << 7 << QList<int>{3, 7};
        QTest::newRow("eight") << 1 << 8 << QList<int>{1, 5};
        QTest::newRow("nine") << 1 << 9 << QList<int>{1, 5, 9};
    }
    void aRangeIsReadInStepsOfFour()
    {
        QFETCH(int, start);
        QFETCH(int, stop);
        QFETCH(QList<int>, pointers);
        QSignalSpy faces(&download(), &LpDownload::faceChanged);
        m_on->meter->clearRequestLog();
        downloadRange(start, stop);

        QList<int> written;
        for (const sim::LoggedRequest& request : m_on->meter->requestLog()) {
            if (request.frame.mid(1, 3) == QByteArray::fromHex("10104d"))
                written.append(quint8(request.frame[7]) << 8 | quint8(request.frame[8]));
        }
        QCOMPARE(written, pointers);
        QCOMPARE(session().Status(), QStringLiteral("Last number of download interval : %1，and finish download！").arg(stop));
        QCOMPARE(faces.first().at(1).toString(), "Reading");
        QCOMPARE(faces.last().at(1).toString(), "Read And Save");
        QVERIFY(session().connection.Timer1Sec.isActive());
        QCOMPARE(rows(), expectedRows(start, stop));
    }

    // What stops a download before it starts, and the checks of the start and stop lists.
    void refusedBeforeItStarts()
    {
        QCOMPARE(download().Start(0, 5, 4), LpStart::RangeReversed);
        QCOMPARE(LpStartMessage(LpStart::RangeReversed), "Interval starting number must less than final number！");
        QCOMPARE(download().Start(0, 0, 4), LpStart::NoRange);
        QCOMPARE(download().ValidIntervals(0), int(m_on->meter->input(0x1190)));

        session().ToggleOnLine(QStringLiteral("15")); // off line
        QCOMPARE(download().Start(0, 1, 1), LpStart::OffLine);
        QCOMPARE(session().Status(), "Communication Failure");
        QVERIFY(!QDir(m_folder.filePath("LP Data")).exists());
    }

    // Each download of the day opens a new header block in the same file of the group.
    void twoDownloadsShareTheDaysFile()
    {
        downloadRange(1, 2);
        downloadRange(3, 3);
        const QString name = "SN004217_20261116_Group1.csv";
        QCOMPARE(QFileInfo(download().LpFilePath).fileName(), name);
        const QList<QByteArray> lines = Lines(download().LpFilePath);
        QCOMPARE(lines.size(), 2 + 2 + 2 + 1);
        QVERIFY(lines[0].startsWith("Date : "));
        QCOMPARE(lines[1], "Date,Time,Vln_avg(point),I_avg(point),kW_avg(interval),kVar_avg(interval),"
                           "kVA_avg(interval),kWh+(total),kvarh+(total),kVAh(total)");
        QVERIFY(lines[4].startsWith("Date : "));
        QCOMPARE(lines[5], lines[1]);
        QCOMPARE(rows(), expectedRows(1, 2) + expectedRows(3, 3));
    }

    void hostileIdentificationsMakeSafeNames_data()
    {
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QString>("stem");
        QTest::newRow("plain") << QByteArray("SN004217") << "SN004217";
        QTest::newRow("climbing out") << QByteArray("../../x\0", 8) << "______x";
        QTest::newRow("separators and tab") << QByteArray("AB\tC/D:") << "AB_C_D_";
        QTest::newRow("nul inside") << QByteArray("AB\0CD", 5) << "AB_CD";
        QTest::newRow("trailing dot") << QByteArray("SN 42.") << "SN 42_";
        QTest::newRow("hidden file") << QByteArray(".profile") << "_profile";
        QTest::newRow("device name") << QByteArray("con  ") << "_con";
        QTest::newRow("all padding") << QByteArray(8, '\0') << "test_";
        QTest::newRow("latin-1 kept") << QByteArray("\xC4\xD6") << "ÄÖ";
        QTest::newRow("latin-1 controls") << QByteArray("A\x85" "B\x9B" "C\x7F") << "A_B_C_";
    }
    void hostileIdentificationsMakeSafeNames()
    {
        QFETCH(QByteArray, after);
        QFETCH(QString, stem);
        const QByteArray identification = QByteArray("QX5820  ") + after;
        QCOMPARE(LpCsvFile::MeterStem(identification), stem);
        QCOMPARE(LpCsvFile::FileName(QByteArray(), QDate(2026, 11, 21), 1), "test__20261121_Group2.csv");
    }

    // An installed program's folder is often read-only: the file goes to the documents folder,
    // and the status line says where.
    void aFolderThatCannotBeWrittenFallsBackToTheDocuments()
    {
        QFile blocker(m_folder.filePath("not a folder"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        download().programFolder = blocker.fileName();
        download().documentsFolder = m_folder.path();
        QCOMPARE(download().Start(0, 1, 1), LpStart::Started);
        QVERIFY(session().Status().contains(QDir::toNativeSeparators(m_folder.filePath("LP Data"))));
        waitForTheEnd();
        QCOMPARE(rows(), expectedRows(1, 1));
    }

    // A disk that fills up stops the download at the step whose rows did not fit: nothing of
    // them stays, the index stands, and the download continues once there is room. The file
    // size limit stands in for a full disk: write() fails the same way, with the system's reason.
    void aFullDiskStopsAtTheStepAndContinuesLater()
    {
        QCOMPARE(download().Start(0, 1, 40), LpStart::Started);
        QTRY_VERIFY(download().LpCurrentIndex >= 4);
        const QString path = download().LpFilePath;
        {
            const FileSizeLimit full(QFileInfo(path).size() + 10);
            QTRY_VERIFY_WITH_TIMEOUT(!download().Timer_RS_Lpf.isActive(), kDownloadMs);
        }
        QCOMPARE(session().Status().section(" The download", 0, 0),
                 "Cannot write " + QDir::toNativeSeparators(path) + ": File too large");
        QVERIFY(session().connection.Timer1Sec.isActive()); // polling goes on meanwhile
        QCOMPARE(rows(), expectedRows(1, int(download().LpCurrentIndex)));

        const int questions = int(m_on->prompts.questions.size());
        QCOMPARE(download().Start(0, 1, 40), LpStart::Continued);
        QCOMPARE(m_on->prompts.questions.size(), questions + 1);
        waitForTheEnd();
        QCOMPARE(rows(), expectedRows(1, 40));
    }

    // A link planted in a shared folder under the name of the day's file: the download writes
    // nothing through it and says why.
    void aLinkInPlaceOfTheDaysFileIsRefused()
    {
        downloadRange(1, 1);
        const QString path = download().LpFilePath;
        const QString outside = m_folder.filePath("someone else's");
        QVERIFY(QFile::rename(path, outside));
        QVERIFY(QFile::link(outside, path));
        const QByteArray before = FileBytes(outside);
        QCOMPARE(download().Start(0, 2, 2), LpStart::FileError);
        QCOMPARE(session().Status(), "Cannot open " + QDir::toNativeSeparators(path)
                                         + ": it is a symbolic link, and the download writes through no link");
        QCOMPARE(FileBytes(outside), before);
    }

    // The progress record is replaced whole or not at all: a write that fails keeps the old
    // one, and a link in its place is refused rather than replaced or followed.
    void aRecordThatCannotBeWrittenKeepsTheOldOne_data()
    {
        QTest::addColumn<bool>("link");
        QTest::addColumn<QString>("reason");
        QTest::newRow("full disk") << false << "File too large";
        QTest::newRow("a link in its place") << true << "it is a symbolic link, and the download writes through no link";
    }
    void aRecordThatCannotBeWrittenKeepsTheOldOne()
    {
        QFETCH(bool, link);
        QFETCH(QString, reason);
        const QString path = m_folder.filePath("SN004217_Group1.progress.json");
        LpProgressRecord record{"SN004217_20261116_Group1.csv", 1, 2, {1, 2}, 1, 5, 40, 300};
        QVERIFY(!record.Save(path));
        const QString kept = link ? m_folder.filePath("kept.json") : path;
        if (link) {
            QVERIFY(QFile::rename(path, kept));
            QVERIFY(QFile::link(kept, path));
        }
        const QByteArray before = FileBytes(kept);
        record.next = 9;
        std::optional<QString> error;
        {
            const FileSizeLimit full(16);
            error = record.Save(path);
        }
        QCOMPARE(error.value_or(QString()), "cannot write " + QDir::toNativeSeparators(path) + ": " + reason);
        QCOMPARE(FileBytes(kept), before);
        QCOMPARE(QDir(m_folder.path()).entryList({"*.new"}, QDir::Files), QStringList());
        QString loadError;
        QCOMPARE(bool(LpProgressRecord::Load(path, &loadError)), !link);
        QFile::remove(path);
        QFile::remove(kept);
    }

    // Downloads broken by a meter that stops answering properly or a port that vanishes (a
    // serial line, or a network connection the device server drops), each continued with
    // "Yes" once on line again, until the file holds the whole range once.
    void brokenDownloadsContinuedLoseNothing_data()
    {
        QTest::addColumn<quint32>("seed");
        QTest::addColumn<Via>("via");
        for (quint32 seed : {1u, 2u, 3u, 4u})
            QTest::addRow("seed %u", seed) << seed << Via::PseudoTerminal;
        for (quint32 seed : {3u, 5u})
            QTest::addRow("seed %u, network", seed) << seed << Via::Network;
    }
    void brokenDownloadsContinuedLoseNothing()
    {
        QFETCH(quint32, seed);
        QFETCH(Via, via);
        if (via == Via::Network)
            QVERIFY(begin(via));
        QRandomGenerator random(seed);
        RegisterLink& link = session().connection.link;
        link.bShowFrames = kTrue;
        int requests = 0;
        int faultAt = 0;
        connect(&link, &RegisterLink::requestEcho, this, [&] {
            if (++requests != faultAt)
                return;
            if (random.bounded(2) == 0)
                m_on->meter->injectFault(Fault::badCrc(), RegisterLink::kAttempts);
            else
                QTimer::singleShot(0, this, [this] { m_on->meter->stop(); });
        });
        for (int interruptions = 0; interruptions < 3; ++interruptions) {
            requests = 0;
            faultAt = 1 + int(random.bounded(12u));
            download().Start(0, 1, 40);
            QTRY_VERIFY_WITH_TIMEOUT(!download().Timer_RS_Lpf.isActive(), kDownloadMs);
            if (download().bLpDownloadActive == kFalse)
                break;
            QVERIFY(!session().connection.bOnLine.isTrue());
            session().ToggleOnLine(QStringLiteral("15"));
            QVERIFY(session().connection.bOnLine.isTrue());
        }
        faultAt = 0;
        if (download().bLpDownloadActive != kFalse) {
            QCOMPARE(download().Start(0, 1, 40), LpStart::Continued);
            waitForTheEnd();
        }
        QCOMPARE(rows(), expectedRows(1, 40));
    }

private:
    bool begin(Via via)
    {
        m_on = std::make_unique<SessionOnLine>();
        if (!m_on->begin(false, via) || !m_folder.isValid())
            return false;
        download().programFolder = m_folder.path();
        download().documentsFolder = QString();
        tick(); // the identification and the groups' configuration
        return true;
    }
    MeterSession& session() { return *m_on->session; }
    LpDownload& download() { return m_on->session->download; }
    void tick() { session().poll.Timer1Sec_Timer(); }

    void waitForTheEnd()
    {
        QTRY_VERIFY_WITH_TIMEOUT(download().bLpDownloadActive == kFalse, kDownloadMs);
    }
    void downloadRange(int start, int stop)
    {
        QCOMPARE(download().Start(0, start, stop), LpStart::Started);
        waitForTheEnd();
    }

    QList<QByteArray> rows() const { return DataRows(m_on->session->download.LpFilePath); }
    // The rows of intervals first..last as the meter holds them (its clock stands still).
    QList<QByteArray> expectedRows(int first, int last) { return MeterRows(*m_on->meter, 0, 8, first, last); }

    QTemporaryDir m_folder;
    std::unique_ptr<SessionOnLine> m_on;
};

QTEST_GUILESS_MAIN(LpDownloadTest)
#include "LpDownloadTest.moc"
