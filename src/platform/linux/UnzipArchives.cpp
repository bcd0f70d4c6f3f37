#include "platform/linux/UnzipArchives.h"

#include "platform/linux/UnpackedTree.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>

namespace quillnest
{

namespace
{

namespace fs = std::filesystem;

/// How the folders begin that are unpacked into.
constexpr const char *prefix = ".quillnest-unpack-";

bool isSameVolume(const fs::path &first, const fs::path &second)
{
    struct stat one;
    struct stat other;
    return ::stat(first.c_str(), &one) == 0 && ::stat(second.c_str(), &other) == 0 && one.st_dev == other.st_dev;
}

/// A folder to unpack into, and a lock that says that somebody does: it is held by this process and by the tool, which
/// goes on for a while if this process is killed.
class Staging
{
public:
    /// Nothing when the disk refuses.
    static std::optional<Staging> make(const fs::path &parent)
    {
        auto name = (parent / prefix).native() + "XXXXXX";
        if (!::mkdtemp(name.data()))
            return std::nullopt;
        Staging result{name};
        std::error_code problem;
        fs::create_directory(result.tree(), problem);
        if (problem || !result.lock(O_CREAT))
            return std::nullopt;
        return result;
    }

    /// Removes what killed runs have left, but nothing in which somebody is at work.
    static void removeLeftOvers(const fs::path &parent)
    {
        std::error_code problem;
        for (const auto &entry : fs::directory_iterator(parent, problem)) {
            if (!entry.path().filename().native().starts_with(prefix) || entry.is_symlink(problem))
                continue;
            Staging left{entry.path()};
            // Without a file to lock it has only just been made, or nearly been removed.
            if (!left.lock(0) && !left.isOld())
                left.m_root.clear();
        }
    }

    Staging(Staging &&other) noexcept
        : m_root(std::exchange(other.m_root, {})), m_descriptor(std::exchange(other.m_descriptor, -1))
    {
    }
    Staging &operator=(Staging &&) = delete;
    ~Staging()
    {
        if (!m_root.empty())
            UnpackedTree::remove(m_root);
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    fs::path tree() const { return m_root / "tree"; }
    /// The locked file, for the tool's words.
    int descriptor() const { return m_descriptor; }

private:
    explicit Staging(fs::path root) : m_root(std::move(root)) { }

    bool lock(int flags)
    {
        m_descriptor = ::open((m_root / "lock").c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
        return m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
    }

    bool isOld() const
    {
        struct stat facts;
        return m_descriptor < 0 && ::stat(m_root.c_str(), &facts) == 0 && ::time(nullptr) - facts.st_mtime > 60;
    }

    fs::path m_root;
    int m_descriptor = -1;
};

/// A kill of the whole machine must not leave a tool that is there by its name alone.
bool writeOut(const fs::path &tree)
{
    const int descriptor = ::open(tree.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool written = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return written;
}

ChildCommand unzip(const QStringList &arguments)
{
    // The tool takes options from its variables too, and without a locale it spells names as it likes.
    return {
        .program = QStringLiteral("/usr/bin/unzip"),
        .arguments = arguments,
        .environment
        = {{QStringLiteral("UNZIP"), QString()},
           {QStringLiteral("UNZIPOPT"), QString()},
           {QStringLiteral("ZIPINFO"), QString()},
           {QStringLiteral("ZIPINFOOPT"), QString()},
           {QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8")}}};
}

/// Whether a name, as the tool lists it, is one within a folder.
bool isWithin(const QByteArray &name)
{
    // An archive from some hosts separates by the other stroke, which the tool understands.
    const auto parts = QByteArray(name).replace('\\', '/').split('/');
    return !parts.first().isEmpty() && !parts.contains("..");
}

} // namespace

bool UnzipArchives::hasOnlyNamesWithin(const QString &archive) const
{
    // One name a line: what would begin another is made visible.
    const auto listed = m_processes->run(unzip({QStringLiteral("-Z1"), archive}));
    if (listed.launchError)
        throw LaunchError(*listed.launchError);
    auto names = listed.output.split('\n');
    return listed.status == 0 && names.takeLast().isEmpty() && std::all_of(names.begin(), names.end(), isWithin);
}

bool UnzipArchives::unpack(const QString &archive, const QString &folder)
{
    const auto real = QFileInfo(folder).canonicalFilePath();
    const auto file = QFileInfo(archive).absoluteFilePath();
    if (real.isEmpty() || !QFileInfo(file).isFile())
        return false;
    // The tool would unpack the file of a name that leads out to some other place, and be content.
    if (!hasOnlyNamesWithin(file))
        return false;
    const fs::path target(QFile::encodeName(real).toStdString());
    // Beside the folder nobody who looks into it sees what is unfinished; only where it is a volume of its own, there.
    const auto parent = isSameVolume(target, target.parent_path()) ? target.parent_path() : target;
    Staging::removeLeftOvers(parent);
    const auto staging = Staging::make(parent);
    if (!staging)
        return false;

    // Names as they are, so that they can be judged; and no question at the terminal, neither for a name that comes
    // twice nor for a password.
    auto command = unzip(
        {QStringLiteral("-q"), QStringLiteral("-o"), QStringLiteral("-^"), QStringLiteral("-P"), QString(), file,
         QStringLiteral("-d"), QFile::decodeName(staging->tree().c_str())});
    command.output = ChildCommand::Output::Descriptor;
    command.errors = ChildCommand::Errors::Merged;
    command.descriptor = staging->descriptor();
    const auto result = m_processes->run(command);
    if (result.launchError)
        throw LaunchError(*result.launchError);
    const bool unpacked = result.status == 0 && UnpackedTree::isHarmless(staging->tree()) && writeOut(staging->tree())
        && UnpackedTree::moveInto(staging->tree(), target);
    // The tool of a run that was killed may have been at it until now.
    Staging::removeLeftOvers(parent);
    return unpacked;
}

} // namespace quillnest
