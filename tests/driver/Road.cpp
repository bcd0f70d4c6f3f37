#include "driver/Road.h"

#include "driver/PackageServer.h"
#include "driver/SetupScreen.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QThread>

namespace quillnest::driver
{

namespace
{

double seconds(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

QString text(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

int number(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toInt();
}

/// When a line of the log was written, in seconds since 1970.
double lineTime(const QString &line)
{
    const auto time = QDateTime::fromString(line.section(QLatin1Char(' '), 0, 0), Qt::ISODateWithMs);
    return static_cast<double>(time.toMSecsSinceEpoch()) / 1000;
}

/// The pitch of a pure tone by its rising zero crossings; 0 for silence.
double pitch(const std::vector<std::int16_t> &samples)
{
    std::vector<std::size_t> crossings;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (samples[i - 1] < 0 && samples[i] >= 0)
            crossings.push_back(i);
    }
    if (crossings.size() < 100)
        return 0;
    return 48000.0 * static_cast<double>(crossings.size() - 1)
        / static_cast<double>(crossings.back() - crossings.front());
}

class Road
{
public:
    explicit Road(QString folder)
        : m_folder(std::move(folder))
        , m_server(m_desktop, {QStringLiteral("--api"), QStringLiteral("35")})
        , m_program(m_desktop, ProgramUnderTest::Runtime::none)
    {
        QDir().mkpath(m_folder);
    }

    QJsonObject go()
    {
        try {
            provision();
            boot();
            showPanel();
            openByClick();
            watch();
            touch();
            type();
            copyAndPaste();
            resize();
            openAgain();
            quit();
        } catch (...) {
            keepLogs();
            throw;
        }
        keepLogs();
        QFile file(m_folder + QStringLiteral("/report.json"));
        if (!file.open(QIODevice::WriteOnly))
            throw DriverError(QStringLiteral("report.json can't be written"));
        file.write(QJsonDocument(m_report).toJson());
        return m_report;
    }

private:
    void report(const char *key, const QJsonValue &value) { m_report.insert(QLatin1String(key), value); }

    /// From nothing to a complete runtime, by the user's consent on the screen.
    void provision()
    {
        SetupScreen setup(m_program);
        m_program.start();
        setup.open();
        setup.waitForPhase(QStringLiteral("needsAcceptance"));
        if (!setup.picture().save(m_folder + QStringLiteral("/setup.png")))
            throw DriverError(QStringLiteral("setup.png can't be written"));
        QElapsedTimer timer;
        timer.start();
        setup.consent();
        setup.waitForPhase(QStringLiteral("ready"), 300);
        report("provisionSeconds", seconds(timer));
        reportArchives(setup.log());
    }

    void reportArchives(const QString &log)
    {
        static const QRegularExpression planned(
            QStringLiteral("plan (\\S+) \\S+ (\\d+) bytes sha1=(\\S+) (\\S+) license="));
        QFile file(m_program.dataFolder() + QStringLiteral("/Runtime/runtime-manifest.json"));
        if (!file.open(QIODevice::ReadOnly))
            throw DriverError(QStringLiteral("nothing records what was installed"));
        const auto record = QJsonDocument::fromJson(file.readAll()).object();
        QJsonArray archives;
        for (auto found = planned.globalMatch(log); found.hasNext();) {
            const auto plan = found.next();
            const auto name = plan.captured(4).section(QLatin1Char('/'), -1);
            const QRegularExpression downloaded(
                QStringLiteral("downloaded %1 in ([0-9.]+)s").arg(QRegularExpression::escape(name)));
            const auto download = downloaded.match(log);
            if (!download.hasMatch() || !m_server.requests().contains(name))
                throw DriverError(QStringLiteral("%1 was not downloaded").arg(name));
            // It is unpacked only after its sum was found to be the list's.
            if (!log.contains(QStringLiteral("installed %1 ").arg(plan.captured(1))))
                throw DriverError(QStringLiteral("%1 was not installed").arg(name));
            archives.append(QJsonObject{
                {QStringLiteral("name"), name},
                {QStringLiteral("bytes"), plan.captured(2).toLongLong()},
                {QStringLiteral("seconds"), download.captured(1).toDouble()},
                {QStringLiteral("checksum"), QStringLiteral("matched")}});
        }
        if (archives.size() != 3 || record.value(QStringLiteral("packages")).toArray().size() != 3)
            throw DriverError(QStringLiteral("not everything was installed"));
        report("archives", archives);
        report("licencesAccepted", record.value(QStringLiteral("acceptedLicenses")));
    }

    void boot()
    {
        m_program.noteAdbCalls();
        QElapsedTimer timer;
        timer.start();
        // Nobody has to ask: a device that has just come is started.
        m_program.waitForState(QStringLiteral("Android to be ready"), 120, [](const QJsonObject &state) {
            return text(state, "androidState") == QStringLiteral("ready");
        });
        report("bootSeconds", seconds(timer));
    }

    void showPanel()
    {
        m_program.addApps(
            {ProgramUnderTest::sample(QStringLiteral("tide")), ProgramUnderTest::sample(QStringLiteral("ember")),
             ProgramUnderTest::sample(QStringLiteral("lantern"))});
        const auto panel = rectangle(m_program.state().value(QStringLiteral("panel")).toObject());
        if (panel.isEmpty())
            throw DriverError(QStringLiteral("the panel is not on the screen"));
        save(panel, QStringLiteral("panel.png"));
    }

    void openByClick()
    {
        m_desktop.click(m_program.waitForTile(QStringLiteral("Tide")).center());
        const auto window = m_program.waitForPicture(60);
        report("package", window.value(QStringLiteral("package")));
        report("firstFrameSeconds", window.value(QStringLiteral("firstFrameSeconds")));
        static const QRegularExpression installed(QStringLiteral("install\\+resolve=([0-9.]+)s"));
        const auto match = installed.match(m_program.log());
        if (!match.hasMatch())
            throw DriverError(QStringLiteral("the log tells of no install"));
        report("installSeconds", match.captured(1).toDouble());
    }

    void watch()
    {
        QElapsedTimer timer;
        timer.start();
        const int before = number(m_program.window(), "framesShown");
        const double beforeAt = seconds(timer);
        QThread::sleep(5);
        const auto window = m_program.window();
        const double afterAt = seconds(timer);
        report("framesPerSecond", (number(window, "framesShown") - before) / (afterAt - beforeAt));
        report("framesShown", number(window, "framesShown"));
        report("worstFrameAgeMilliseconds", window.value(QStringLiteral("worstFrameAgeMilliseconds")));
        m_program.waitForState(QStringLiteral("sound to be played"), 20, [](const QJsonObject &state) {
            const auto first = state.value(QStringLiteral("windows")).toArray().first().toObject();
            return number(first, "audioFramesPlayed") > 48000;
        });
        report("audioFramesPlayed", number(m_program.window(), "audioFramesPlayed"));
        const auto played
            = m_program.device().value(QStringLiteral("sessions")).toArray().first()[QStringLiteral("tone")].toDouble();
        const double heard = pitch(m_desktop.recordSound(1.5));
        report("tonePlayedHertz", played);
        report("toneHeardHertz", heard);
    }

    void touch()
    {
        const auto area = rectangle(m_program.window().value(QStringLiteral("videoArea")).toObject());
        m_desktop.click(QRectF(area).topLeft() + QPointF(area.width() * 0.7, area.height() * 0.62));
        waitFor(QStringLiteral("the touch to reach the device"), 10, [this] {
            return number(m_program.device(), "touchesSeen") >= 2;
        });
        report("touchesSeenByDevice", number(m_program.device(), "touchesSeen"));
        // Long enough for the mark to come back in the picture, and to be nowhere near gone.
        const int shown = number(m_program.window(), "framesShown");
        waitFor(QStringLiteral("pictures with the touch"), 10, [this, shown] {
            return number(m_program.window(), "framesShown") > shown + 10;
        });
        save(rectangle(m_program.window().value(QStringLiteral("frame")).toObject()), QStringLiteral("window.png"));
    }

    void type()
    {
        m_desktop.type(QStringLiteral("hello"));
        m_desktop.key(QStringLiteral("Left"));
        m_desktop.key(QStringLiteral("shift+Right"));
        waitFor(QStringLiteral("keys and text to reach the device"), 10, [this] {
            const auto device = m_program.device();
            return number(device, "keysSeen") >= 4 && typedText(device).contains(QStringLiteral("hello"));
        });
        report("keysSeenByDevice", number(m_program.device(), "keysSeen"));
        report("textSeenByDevice", typedText(m_program.device()));
    }

    void copyAndPaste()
    {
        const auto outward = QStringLiteral("from the desktop é Ж");
        m_desktop.setClipboard(outward);
        m_desktop.key(QStringLiteral("ctrl+v"));
        waitFor(QStringLiteral("the clipboard to reach the device"), 10, [this, &outward] {
            return text(m_program.device(), "clipboard") == outward;
        });
        report("clipboardMacToAndroid", true);
        const auto inward = QStringLiteral("from the device ü Я");
        m_program.deviceControl({QStringLiteral("clipboard"), inward});
        waitFor(QStringLiteral("the device's clipboard to reach the desktop"), 10, [this, &inward] {
            return m_desktop.clipboard() == inward;
        });
        report("clipboardAndroidToMac", true);
    }

    void resize()
    {
        const auto before = rectangle(m_program.window().value(QStringLiteral("frame")).toObject());
        const int videoWidth = number(m_program.window(), "videoWidth");
        const QPointF corner = QPointF(before.x(), before.y() + before.height()) + QPointF(2, -2);
        m_desktop.drag(corner, corner + QPointF(-80, -100));
        m_program.waitForState(QStringLiteral("the video to take the new size"), 15, [&](const QJsonObject &state) {
            const auto window = state.value(QStringLiteral("windows")).toArray().first().toObject();
            return number(window, "videoWidth") > videoWidth;
        });
        const auto device = m_program.device();
        const auto last = device.value(QStringLiteral("resizes")).toArray().last();
        const auto window = m_program.window();
        if (last[QStringLiteral("width")].toInt() != number(window, "videoWidth")
            || last[QStringLiteral("height")].toInt() != number(window, "videoHeight"))
            throw DriverError(QStringLiteral("the video has another size than the device was asked for"));
        report(
            "resizeSeenByDevice",
            QStringLiteral("%1x%2").arg(number(window, "videoWidth")).arg(number(window, "videoHeight")));
        const int shown = number(window, "framesShown");
        waitFor(QStringLiteral("pictures of the new size"), 10, [this, shown] {
            return number(m_program.window(), "framesShown") > shown + 5;
        });
        save(rectangle(m_program.window().value(QStringLiteral("frame")).toObject()), QStringLiteral("resized.png"));
    }

    void openAgain()
    {
        m_program.post(QStringLiteral("close-all"));
        m_program.waitForState(QStringLiteral("the window to go"), 20, [](const QJsonObject &state) {
            return state.value(QStringLiteral("windows")).toArray().isEmpty();
        });
        m_program.post(QStringLiteral("open:Tide"));
        const auto again = m_program.waitForPicture(30);
        report("repeatFirstFrameSeconds", again.value(QStringLiteral("firstFrameSeconds")));
        double ready = 0;
        double found = 0;
        for (const auto &line : m_program.log().split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            if (line.contains(QStringLiteral("runtime ready after=")))
                ready = lineTime(line);
            else if (line.contains(QStringLiteral("already installed package=")))
                found = lineTime(line);
        }
        if (found < ready || found == 0)
            throw DriverError(QStringLiteral("the repeat launch did not find the app installed"));
        int count = 0;
        // The log's times are cut to milliseconds.
        for (const auto &call : m_program.adbCalls())
            count += call.time >= ready && call.time <= found + 0.001 ? 1 : 0;
        report("repeatLaunchAdbCommands", count);
    }

    void quit()
    {
        const int status = m_program.quit();
        if (status != 0)
            throw DriverError(QStringLiteral("the program ended with status %1").arg(status));
        waitFor(QStringLiteral("the device to stop"), 20, [this] { return !m_program.isDeviceRunning(); });
        report("deviceStoppedOnQuit", true);
    }

    static QString typedText(const QJsonObject &device)
    {
        return device.value(QStringLiteral("sessions")).toArray().first()[QStringLiteral("text")].toString();
    }

    void save(QRect area, const QString &name)
    {
        const auto image = m_desktop.screenshot(area);
        if (image.isNull() || !image.save(m_folder + QLatin1Char('/') + name))
            throw DriverError(QStringLiteral("%1 can't be written").arg(name));
    }

    void keepLogs()
    {
        for (const auto &name : QDir(m_program.logFolder()).entryList(QDir::Files)) {
            QFile::remove(m_folder + QLatin1Char('/') + name);
            QFile::copy(m_program.logFolder() + QLatin1Char('/') + name, m_folder + QLatin1Char('/') + name);
        }
        QFile output(m_folder + QStringLiteral("/program-output.txt"));
        if (output.open(QIODevice::WriteOnly))
            output.write(m_program.output());
    }

    const QString m_folder;
    TestDesktop m_desktop;
    PackageServer m_server;
    ProgramUnderTest m_program;
    QJsonObject m_report;
};

} // namespace

QJsonObject goTheRoad(const QString &folder)
{
    return Road(folder).go();
}

} // namespace quillnest::driver
