#include "benchmarks/LaunchBench.h"

#include "benchmarks/AppWindows.h"
#include "benchmarks/BareSession.h"
#include "benchmarks/ExportedEnvironment.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QThread>

namespace quillnest::bench
{

namespace
{

using driver::ProgramUnderTest;

constexpr int launches = 11;
const auto package = QStringLiteral("app.quillnest.samples.tide");

/// When the last line with this text was written, in milliseconds.
double timeOf(const QString &log, const QString &text)
{
    double time = -1;
    for (const auto &line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (line.contains(text))
            time = static_cast<double>(
                QDateTime::fromString(line.section(QLatin1Char(' '), 0, 0), Qt::ISODateWithMs).toMSecsSinceEpoch());
    }
    if (time < 0)
        throw driver::DriverError(QStringLiteral("the log does not tell \"%1\"").arg(text));
    return time;
}

struct Launch {
    double commands = 0;
    double connection = 0;
    double firstFrame = 0;
    double firstPaint = 0;
    QSize display;

    double total() const { return commands + connection + firstFrame + firstPaint; }
};

/// The log's times are whole milliseconds, and those that are summed up here share their ends.
Launch launch(const ProgramUnderTest &program)
{
    program.post(QStringLiteral("open:Tide"));
    const auto window = program.waitForPicture(60);
    const auto log = program.log();
    const auto windowLog = program.windowLog(package);
    const double clicked = timeOf(log, QStringLiteral("open requested app="));
    const double opened = timeOf(log, QStringLiteral("native window open package="));
    const double connected = timeOf(windowLog, QStringLiteral("sockets connected after"));
    const double received = timeOf(windowLog, QStringLiteral("first frame after"));
    const double shown = opened + window.value(QStringLiteral("firstFrameSeconds")).toDouble() * 1000;
    closeWindows(program);
    return {
        opened - clicked,
        connected - opened,
        received - connected,
        shown - received,
        {window.value(QStringLiteral("videoWidth")).toInt(), window.value(QStringLiteral("videoHeight")).toInt()}};
}

/// What the program asks of the device between the click and its window.
std::vector<std::vector<QByteArray>> commandsOfALaunch(const ProgramUnderTest &program)
{
    program.noteAdbCalls();
    const auto before = program.adbCalls().size();
    launch(program);
    const auto calls = program.adbCalls();
    std::vector<std::vector<QByteArray>> commands;
    for (std::size_t i = before; i < calls.size() && !calls[i].arguments.contains(QStringLiteral(" push ")); ++i) {
        std::vector<QByteArray> words;
        // Behind "-s" and the serial.
        for (const auto &word : calls[i].arguments.section(QLatin1Char(' '), 2).split(QLatin1Char(' ')))
            words.push_back(word.toUtf8());
        commands.push_back(std::move(words));
    }
    return commands;
}

void run(BenchReport &report)
{
    driver::TestDesktop::Options options;
    options.sound = false;
    driver::TestDesktop desktop(options);
    const ExportedEnvironment environment(desktop.environment());
    const auto program = programWithTide(desktop);
    const auto display = launch(*program).display;

    BareSession::Plan plan;
    plan.commands = commandsOfALaunch(*program);
    const auto adb = program->dataFolder() + QStringLiteral("/Runtime/sdk/platform-tools/adb");
    // The real one again: the one that takes notes would cost both of them time.
    if (!QFile::remove(adb) || !QFile::rename(adb + QStringLiteral(".real"), adb))
        throw driver::DriverError(QStringLiteral("adb can't be put back"));
    plan.adb = QFile::encodeName(adb);
    plan.serial = "emulator-5556";
    plan.serverFile = QFile::encodeName(
        QFileInfo(ProgramUnderTest::program(QStringLiteral("quillnest"))).path()
        + QStringLiteral("/../share/quillnest/Contents/Resources/AndroidBridge/server/scrcpy-server"));
    plan.package = package.toUtf8();
    plan.display = display;
    const BareSession bare(plan);
    launch(*program);
    bare.run();

    Samples own, whole, commands, connection, firstFrame, firstPaint;
    Samples bareWhole, bareCommands, bareConnection, bareFirstFrame;
    for (int i = 0; i < launches; ++i) {
        Launch ours;
        if (i % 2 == 0)
            ours = launch(*program);
        QThread::msleep(500);
        const auto theirs = bare.run();
        QThread::msleep(500);
        if (i % 2 != 0)
            ours = launch(*program);
        own.add(ours.total() - theirs.total());
        whole.add(ours.total());
        commands.add(ours.commands);
        connection.add(ours.connection);
        firstFrame.add(ours.firstFrame);
        firstPaint.add(ours.firstPaint);
        bareWhole.add(theirs.total());
        bareCommands.add(theirs.commands);
        bareConnection.add(theirs.connection);
        bareFirstFrame.add(theirs.firstFrame);
    }
    const auto ms = QStringLiteral("ms");
    report.add(QStringLiteral("launch_own_ms"), own, QStringLiteral("ms more than the bare client beside it"));
    report.add(QStringLiteral("launch_ms"), whole, ms);
    report.add(
        QStringLiteral("launch_commands_ms"), commands, QStringLiteral("ms, %1 commands").arg(plan.commands.size()));
    report.add(QStringLiteral("launch_connection_ms"), connection, ms);
    report.add(QStringLiteral("launch_first_frame_ms"), firstFrame, ms);
    report.add(QStringLiteral("launch_first_paint_ms"), firstPaint, ms);
    report.add(QStringLiteral("launch_bare_ms"), bareWhole, ms);
    report.add(QStringLiteral("launch_bare_commands_ms"), bareCommands, ms);
    report.add(QStringLiteral("launch_bare_connection_ms"), bareConnection, ms);
    report.add(QStringLiteral("launch_bare_first_frame_ms"), bareFirstFrame, ms);
}

} // namespace

Benchmark launchBench()
{
    return {
        QStringLiteral("launch"),
        {QStringLiteral("launch_own_ms"), QStringLiteral("launch_ms"), QStringLiteral("launch_commands_ms"),
         QStringLiteral("launch_connection_ms"), QStringLiteral("launch_first_frame_ms"),
         QStringLiteral("launch_first_paint_ms"), QStringLiteral("launch_bare_ms"),
         QStringLiteral("launch_bare_commands_ms"), QStringLiteral("launch_bare_connection_ms"),
         QStringLiteral("launch_bare_first_frame_ms")},
        run};
}

} // namespace quillnest::bench
