// hostile-packages COUNT [FIRST] [FOLDER]: makes packages that mean no good, COUNT of them from the number FIRST on,
// and does with each what the program does: it is added to a library, listed, drawn, launched on a scripted device, and
// found again by the next start. Each gets a process, two seconds of the processor and 300 MiB. One that takes more, or
// that brings about what must not be, is kept in FOLDER under its number, and is made again by that number.
#include "base/PlainText.h"
#include "core/CoreFixture.h"
#include "hostile/HostileArchive.h"
#include "package/APKManifestReader.h"
#include "package/AppIconStore.h"
#include "platform/posix/ZipArchives.h"
#include "runtime/AndroidRuntimeError.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstring>
#include <fstream>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace quillnest;

namespace
{
#ifdef __SANITIZE_ADDRESS__
// The instrumented program takes several times as long, and the allocator keeps what is freed.
constexpr double allowedSeconds = 24;
constexpr long allowedKibibytes = 2 * 1024 * 1024;
#else
constexpr double allowedSeconds = 2;
constexpr long allowedKibibytes = 300 * 1024;
#endif
/// For what doesn't end at all.
constexpr rlim_t mostSeconds = 60;

struct Outcome {
    double seconds = 0;
    long kibibytes = 0;
    bool hasLabel = false;
    bool hasIcon = false;
    bool hasPackage = false;
    /// What must not be; empty if all is well.
    char problem[200] = {};
};

double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The largest this process has been in memory since `forgetPeak`.
long peakKibibytes()
{
    std::ifstream status("/proc/self/status");
    std::string key;
    while (status >> key && key != "VmHWM:") { }
    long kibibytes = 0;
    status >> kibibytes;
    return kibibytes;
}

void forgetPeak()
{
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

/// A library that reads real packages, and a device that says yes to everything.
class Library : public CoreFixture
{
public:
    Library()
    {
        fakes.platform.archives = std::make_shared<ZipArchives>();
        device.listed = true;
        device.booted = true;
        fakes.processes->on(QStringLiteral(" install "), QByteArray("Success\n"));
        makeStore();
    }
    void TestBody() override { }

    void use(const QString &path, Outcome &outcome)
    {
        add({path});
        if (store->apps().size() != 1)
            return fail(outcome, "it isn't in the library");
        const auto name = store->apps().front().name;
        outcome.hasLabel = name != QStringLiteral("package");
        checkName(name, outcome);
        draw(outcome);
        launch(path, outcome);
        checkCommands(outcome);
        checkLog(outcome);
        // The next start: what was kept is read again.
        makeStore();
        if (store->orderedApps().size() != 1 || store->apps().front().name != name)
            fail(outcome, "the next start has another library");
        draw(outcome);
        store->remove(store->apps().front());
        if (!store->apps().empty())
            fail(outcome, "it can't be removed");
    }

private:
    static void fail(Outcome &outcome, const char *problem)
    {
        std::snprintf(outcome.problem, sizeof outcome.problem, "%s", problem);
    }

    static void checkName(const QString &name, Outcome &outcome)
    {
        if (name.isEmpty() || name.size() > 200 || std::any_of(name.begin(), name.end(), isCommanding))
            fail(outcome, "its name is no name");
    }

    void draw(Outcome &outcome)
    {
        const auto app = store->apps().front();
        AppIconStore icons(fakes.platform, log);
        icons.image(app);
        fakes.settle();
        const auto image = icons.image(app);
        outcome.hasIcon = !image.isNull();
        if (image.width() > AppIconStore::largestSide || image.height() > AppIconStore::largestSide)
            fail(outcome, "its picture is larger than any place");
        std::ignore = store->orderedApps();
    }

    void launch(const QString &path, Outcome &outcome)
    {
        const auto package = APKManifestReader::packageName(*fakes.platform.archives, path.toStdString());
        outcome.hasPackage = package.has_value();
        installed = "package:org.example.before\npackage:" + QByteArray::fromStdString(package.value_or("")) + "\n";
        try {
            runToEnd<QString>(fakes, runtime->installAndLaunch(path));
        } catch (const AndroidRuntimeError &) {
            // Most of them can't be.
        }
    }

    /// What reaches a device's shell is a program's text there.
    void checkCommands(Outcome &outcome)
    {
        static const QRegularExpression harmless(QStringLiteral("^[A-Za-z0-9_./:=+ -]*$"));
        for (const auto &call : fakes.processes->calls()) {
            const auto start = call.arguments.indexOf(QStringLiteral("shell"));
            if (start >= 0 && !harmless.match(call.arguments.mid(start).join(QLatin1Char(' '))).hasMatch())
                fail(outcome, "it speaks to the device's shell");
        }
    }

    void checkLog(Outcome &outcome)
    {
        const auto text = log->tail(100'000);
        if (text.size() > 100'000)
            fail(outcome, qPrintable(QStringLiteral("it fills the log with %1 characters").arg(text.size())));
        const auto isWrong = [](QChar character) { return character != QLatin1Char('\n') && isCommanding(character); };
        if (std::any_of(text.begin(), text.end(), isWrong))
            fail(outcome, "the log holds what commands");
    }
};

/// An exception would carry on with the parent's work.
Outcome useOnce(const QString &path) noexcept
{
    Library library;
    forgetPeak();
    const auto startTime = processorTime();
    const auto startPeak = peakKibibytes();
    Outcome outcome;
    library.use(path, outcome);
    outcome.seconds = processorTime() - startTime;
    outcome.kibibytes = peakKibibytes() - startPeak;
    if (outcome.seconds > allowedSeconds)
        std::snprintf(outcome.problem, sizeof outcome.problem, "%.1f seconds of the processor", outcome.seconds);
    if (outcome.kibibytes > allowedKibibytes)
        std::snprintf(outcome.problem, sizeof outcome.problem, "%ld MiB", outcome.kibibytes / 1024);
    return outcome;
}

/// In a process of its own, whose time and memory are its own.
Outcome use(const QString &path)
{
    Outcome outcome;
    std::snprintf(outcome.problem, sizeof outcome.problem, "it ends the program");
    int ends[2];
    if (pipe(ends) != 0)
        return outcome;
    malloc_trim(0);
    std::fflush(stdout);
    const auto child = fork();
    if (child == 0) {
        const rlimit limit{mostSeconds, mostSeconds};
        setrlimit(RLIMIT_CPU, &limit);
        const auto result = useOnce(path);
        _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    close(ends[1]);
    Outcome read = {};
    const bool isRead = ::read(ends[0], &read, sizeof read) == sizeof read;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return isRead && WIFEXITED(status) && WEXITSTATUS(status) == 0 ? read : outcome;
}

struct Record {
    double value = 0;
    std::uint64_t number = 0;
    void take(double candidate, std::uint64_t of)
    {
        if (candidate > value)
            *this = {candidate, of};
    }
};
} // namespace

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 4) {
        std::fputs("usage: hostile-packages COUNT [FIRST] [FOLDER]\n", stderr);
        return 2;
    }
    const auto count = std::strtoull(argv[1], nullptr, 10);
    const auto first = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    const auto folder = QString::fromLocal8Bit(argc > 3 ? argv[3] : ".");
    QCoreApplication application(argc, argv);
    const QTemporaryDir home;
    const auto path = home.filePath(QStringLiteral("package.apk"));
    Record slowest;
    Record largest;
    std::uint64_t labels = 0;
    std::uint64_t icons = 0;
    std::uint64_t packages = 0;
    std::uint64_t failures = 0;
    for (auto number = first; number < first + count; ++number) {
        const auto bytes = hostile::hostilePackage(number);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            std::perror("hostile-packages");
            return 2;
        }
        file.close();
        const auto outcome = use(path);
        if (number > first && (number - first) % 1000 == 0)
            std::printf("%llu tried\n", static_cast<unsigned long long>(number - first));
        slowest.take(outcome.seconds, number);
        largest.take(static_cast<double>(outcome.kibibytes) / 1024, number);
        labels += outcome.hasLabel;
        icons += outcome.hasIcon;
        packages += outcome.hasPackage;
        if (outcome.problem[0] == '\0')
            continue;
        ++failures;
        QDir().mkpath(folder);
        const auto kept = QStringLiteral("%1/%2.apk").arg(folder).arg(number);
        QFile::remove(kept);
        QFile::copy(path, kept);
        std::printf(
            "%llu: %s; kept as %s\n", static_cast<unsigned long long>(number), outcome.problem, qPrintable(kept));
    }
    std::printf(
        "%llu packages, %llu with a label, %llu with a package name, %llu with an icon; the slowest took %.2f s "
        "(%llu), "
        "the largest %.0f MiB (%llu); %llu failed\n",
        static_cast<unsigned long long>(count), static_cast<unsigned long long>(labels),
        static_cast<unsigned long long>(packages), static_cast<unsigned long long>(icons), slowest.value,
        static_cast<unsigned long long>(slowest.number), largest.value, static_cast<unsigned long long>(largest.number),
        static_cast<unsigned long long>(failures));
    // Packages of which nothing is ever read would try nothing.
    const bool isDeep = count < 100 || (4 * labels > count && 4 * packages > count && 10 * icons > count);
    if (!isDeep)
        std::puts("Too few of them get past the first head.");
    return failures == 0 && isDeep ? 0 : 1;
}
