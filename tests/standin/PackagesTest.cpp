#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUrl>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace
{

struct Reply {
    QByteArray head;
    QByteArray body;
    bool ended = true;
    qint64 milliseconds = 0;

    int status() const { return head.mid(9, 3).toInt(); }
    std::optional<qint64> length() const
    {
        const auto at = head.indexOf("Content-Length: ");
        return at < 0 ? std::nullopt : std::optional(head.mid(at + 16, head.indexOf('\r', at) - at - 16).toLongLong());
    }
};

class PackagesTest : public ::testing::Test
{
protected:
    void start(const QStringList &arguments = {})
    {
        // What stands in the way of a test is told; what it prints is the address of its lists.
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(
            QStringLiteral(STANDIN_PACKAGES),
            QStringList{u"--api"_s, u"35"_s, u"--api"_s, u"33"_s, u"--image-bytes"_s, u"300000"_s} + arguments);
        ASSERT_TRUE(process.waitForReadyRead(30000));
        repository = QUrl(QString::fromUtf8(process.readLine().trimmed()));
        ASSERT_EQ(repository.path(), u"/android/repository/"_s);
    }
    ~PackagesTest() override
    {
        process.kill();
        process.waitForFinished();
    }

    /// Reads to the end, or for as long as `patience`.
    Reply get(const QString &address, int patience = 20000) const
    {
        QElapsedTimer timer;
        timer.start();
        const auto url = repository.resolved(QUrl(address));
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, static_cast<quint16>(url.port()));
        socket.write("GET " + url.toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority) + " HTTP/1.1\r\n\r\n");
        Reply reply;
        QByteArray bytes;
        while (socket.waitForReadyRead(patience))
            bytes += socket.readAll();
        bytes += socket.readAll();
        const auto split = bytes.indexOf("\r\n\r\n");
        reply.head = bytes.left(split + 2);
        reply.body = bytes.mid(split + 4);
        reply.ended = socket.state() == QAbstractSocket::UnconnectedState;
        reply.milliseconds = timer.elapsed();
        return reply;
    }

    void fault(const QString &query) const { ASSERT_EQ(get(u"/standin/fault?"_s + query).status(), 200); }

    struct Listed {
        qint64 size = 0;
        QByteArray sha1;
        bool isWellFormed = false;
    };
    Listed listed(const QString &list, const QString &file) const
    {
        const auto xml = get(list).body;
        Listed result;
        QXmlStreamReader reader(xml);
        Listed current;
        while (!reader.atEnd()) {
            reader.readNext();
            if (!reader.isStartElement())
                continue;
            if (reader.name() == u"size")
                current.size = reader.readElementText().toLongLong();
            else if (reader.name() == u"checksum")
                current.sha1 = reader.readElementText().toLatin1();
            else if (reader.name() == u"url" && reader.readElementText() == file)
                result = current;
        }
        result.isWellFormed = !reader.hasError();
        return result;
    }

    /// The names in an archive as the tool sees them; nothing if it is none.
    static QStringList namesIn(const QByteArray &archive)
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"a.zip"_s));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.write(archive) == archive.size() && file.flush());
        QProcess unzip;
        unzip.start(u"unzip"_s, {u"-tqq"_s, file.fileName()});
        unzip.waitForFinished();
        if (unzip.exitCode() != 0)
            return {};
        unzip.start(u"unzip"_s, {u"-Z1"_s, file.fileName()});
        unzip.waitForFinished();
        return QString::fromUtf8(unzip.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    }

    QProcess process;
    QUrl repository;
    const QString toolsList = u"repository2-3.xml"_s;
    const QString imagesList = u"sys-img/android/sys-img2-3.xml"_s;
    const QString tools = u"platform-tools_r35.0.2-linux.zip"_s;
    const QString emulator = u"emulator-linux_x64-12325540.zip"_s;
    const QString image = u"x86_64-35_r01.zip"_s;
};

} // namespace

TEST_F(PackagesTest, archivesAreWhatTheListsSay)
{
    start();
    const std::tuple<QString, QString, QString, QString> archives[] = {
        {toolsList, QString(), tools, u"platform-tools/adb"_s},
        {toolsList, QString(), emulator, u"emulator/standin-device-tool"_s},
        {imagesList, u"sys-img/android/"_s, image, u"x86_64/system.img"_s},
        {imagesList, u"sys-img/android/"_s, u"x86_64-33_r01.zip"_s, u"x86_64/build.prop"_s},
    };
    for (const auto &[list, folder, file, name] : archives) {
        SCOPED_TRACE(qPrintable(file));
        const auto entry = listed(list, file);
        EXPECT_TRUE(entry.isWellFormed);
        const auto reply = get(folder + file);
        EXPECT_EQ(reply.status(), 200);
        EXPECT_EQ(reply.length(), reply.body.size());
        EXPECT_EQ(entry.size, reply.body.size());
        EXPECT_EQ(entry.sha1, QCryptographicHash::hash(reply.body, QCryptographicHash::Sha1).toHex());
        const auto names = namesIn(reply.body);
        EXPECT_TRUE(names.contains(name));
        const auto top = name.section(u'/', 0, 0);
        for (const auto &each : names)
            EXPECT_EQ(each.section(u'/', 0, 0), top);
    }
    EXPECT_EQ(listed(imagesList, u"x86_64-34_r01.zip"_s).size, 0) << "nobody asked for it";
}

TEST_F(PackagesTest, theSameArchivesEveryTime)
{
    start();
    const auto once = listed(imagesList, image);
    process.kill();
    process.waitForFinished();
    start();
    EXPECT_EQ(listed(imagesList, image).sha1, once.sha1);
}

TEST_F(PackagesTest, requestsAreNotedInOrder)
{
    start();
    get(imagesList);
    get(u"nothing"_s);
    get(u"../../elsewhere"_s);
    const auto requests = QJsonDocument::fromJson(get(u"/standin/requests"_s).body).array();
    ASSERT_EQ(requests.size(), 3);
    EXPECT_EQ(requests[0][u"path"], u"/android/repository/sys-img/android/sys-img2-3.xml"_s);
    EXPECT_EQ(requests[0][u"status"], 200);
    EXPECT_EQ(requests[1][u"status"], 404);
    EXPECT_EQ(requests[2][u"status"], 404);
}

TEST_F(PackagesTest, faultsShowWhereTheyAreToldTo)
{
    start({u"--fault"_s, u"missing@sys-img2"_s});
    EXPECT_EQ(get(imagesList).status(), 404);
    EXPECT_EQ(get(toolsList).status(), 200);
    EXPECT_EQ(get(u"/standin/clear"_s).status(), 200);
    EXPECT_EQ(get(imagesList).status(), 200);
    fault(u"name=garbled&where=repository2"_s);
    EXPECT_FALSE(listed(toolsList, tools).isWellFormed);
    EXPECT_TRUE(listed(imagesList, image).isWellFormed);
}

TEST_F(PackagesTest, aWrongChecksumIsWrong)
{
    start();
    fault(u"name=wrong-checksum&where=platform-tools"_s);
    const auto entry = listed(toolsList, tools);
    const auto reply = get(tools);
    EXPECT_EQ(entry.size, reply.body.size());
    EXPECT_NE(entry.sha1, QCryptographicHash::hash(reply.body, QCryptographicHash::Sha1).toHex());
}

TEST_F(PackagesTest, linesThatAreCutSlowSilentOrOfUnknownLength)
{
    start();
    const auto address = u"sys-img/android/"_s + image;
    const auto whole = get(address).body;
    fault(u"name=cut&argument=1000&where=zip"_s);
    const auto cut = get(address);
    EXPECT_EQ(cut.body, whole.first(1000));
    EXPECT_EQ(cut.length(), whole.size());
    EXPECT_TRUE(cut.ended);
    get(u"/standin/clear"_s);
    fault(u"name=stall&argument=2000&where=zip"_s);
    const auto stalled = get(address, 500);
    EXPECT_EQ(stalled.body, whole.first(2000));
    EXPECT_FALSE(stalled.ended);
    get(u"/standin/clear"_s);
    fault(u"name=no-length&where=zip"_s);
    const auto unknown = get(address);
    EXPECT_EQ(unknown.length(), std::nullopt);
    EXPECT_EQ(unknown.body, whole);
    get(u"/standin/clear"_s);
    fault(u"name=slow&argument=600000&where=zip"_s);
    const auto slow = get(address);
    EXPECT_EQ(slow.body, whole);
    // Half a second by the rate, and never faster than it.
    EXPECT_GE(slow.milliseconds, 400);
}

TEST_F(PackagesTest, archivesThatLeadOutHaveTheRightSum)
{
    start();
    const std::pair<QString, QString> escapes[]
        = {{u"dotdot"_s, u"platform-tools/../../../escaped"_s},
           {u"absolute"_s, u"/tmp/escaped"_s},
           {u"link"_s, u"platform-tools/way-out/escaped"_s}};
    for (const auto &[kind, name] : escapes) {
        get(u"/standin/clear"_s);
        fault(u"name=escape&argument="_s + kind + u"&where=platform-tools"_s);
        const auto reply = get(tools);
        EXPECT_TRUE(namesIn(reply.body).contains(name)) << qPrintable(kind);
        EXPECT_EQ(
            listed(toolsList, tools).sha1, QCryptographicHash::hash(reply.body, QCryptographicHash::Sha1).toHex());
    }
}

TEST_F(PackagesTest, whatMakesNoSenseIsRefused)
{
    start();
    for (const auto *query : {"name=nonsense", "name=cut", "name=cut&argument=much", "name=escape&argument=down", ""})
        EXPECT_EQ(get(u"/standin/fault?"_s + QLatin1String(query)).status(), 400) << query;
    EXPECT_EQ(get(u"/standin/other"_s).status(), 400);
    QProcess refused;
    refused.start(QStringLiteral(STANDIN_PACKAGES), {u"--api"_s, u"35"_s, u"--fault"_s, u"nonsense"_s});
    EXPECT_TRUE(refused.waitForFinished(30000));
    EXPECT_NE(refused.exitCode(), 0);
}
