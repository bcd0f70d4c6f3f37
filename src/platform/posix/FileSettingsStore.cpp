#include "platform/posix/FileSettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <QThreadPool>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

namespace quillnest
{

namespace
{

const auto dataKey = QStringLiteral("$data");

QJsonValue encode(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QByteArray:
        return QJsonObject{{dataKey, QString::fromLatin1(value.toByteArray().toBase64())}};
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        QJsonArray array;
        for (const auto &element : value.toList())
            array.append(encode(element));
        return array;
    }
    case QMetaType::QVariantMap: {
        QJsonObject object;
        const auto map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            object.insert(it.key(), encode(it.value()));
        return object;
    }
    default:
        return QJsonValue::fromVariant(value);
    }
}

QVariant decode(const QJsonValue &value)
{
    if (value.isArray()) {
        QVariantList list;
        for (const auto &element : value.toArray())
            list.append(decode(element));
        return list;
    }
    if (value.isObject()) {
        const auto object = value.toObject();
        if (object.size() == 1 && object.contains(dataKey))
            return QByteArray::fromBase64(object.value(dataKey).toString().toLatin1());
        QVariantMap map;
        for (auto it = object.begin(); it != object.end(); ++it)
            map.insert(it.key(), decode(it.value()));
        return map;
    }
    return value.toVariant();
}

/// Equal in value and in type: true and 1 are two values, as they are in the file.
bool isSame(const QVariant &one, const QVariant &other)
{
    if (one.typeId() != other.typeId())
        return false;
    if (one.typeId() == QMetaType::QVariantList) {
        const auto a = one.toList();
        const auto b = other.toList();
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
    }
    if (one.typeId() == QMetaType::QVariantMap) {
        const auto a = one.toMap();
        const auto b = other.toMap();
        return a.keys() == b.keys() && std::equal(a.begin(), a.end(), b.begin(), b.end(), isSame);
    }
    return one == other;
}

using Stamp = std::tuple<quint64, qint64, qint64>;

Stamp stampOf(const struct stat &status)
{
    return {
        status.st_ino, static_cast<qint64>(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec,
        status.st_size};
}

/// Holds the lock that all processes take around a change of the file. The lock has a file of its own, because the
/// settings file is replaced by every write.
class ProcessLock
{
public:
    explicit ProcessLock(const QString &path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
    {
        // Whoever holds it longer stands still, and may do so for ever.
        constexpr int tries = 200;
        for (int i = 0; m_descriptor >= 0 && !m_isHeld && i < tries; ++i) {
            m_isHeld = ::flock(m_descriptor, LOCK_EX | LOCK_NB) == 0;
            if (!m_isHeld)
                ::usleep(10'000);
        }
    }
    ~ProcessLock()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    ProcessLock(const ProcessLock &) = delete;
    ProcessLock &operator=(const ProcessLock &) = delete;

    /// False when another process doesn't let go of it. A folder in which there can be no lock has none.
    bool isHeld() const { return m_isHeld || m_descriptor < 0; }

private:
    int m_descriptor;
    bool m_isHeld = false;
};

/// -1 for what can't be opened, and for what nobody would have written here: something that is no regular file, or too
/// much.
int openToRead(const QString &path)
{
    constexpr qint64 largest = qint64(64) * 1024 * 1024;
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {
    };
    if (descriptor < 0 || (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= largest))
        return descriptor;
    ::close(descriptor);
    errno = S_ISREG(status.st_mode) ? EFBIG : EINVAL;
    return -1;
}

/// None if what is in the file that is open is no JSON object.
std::optional<QVariantMap> valuesIn(int descriptor)
{
    QFile file;
    if (!file.open(descriptor, QIODevice::ReadOnly, QFileDevice::DontCloseHandle))
        return std::nullopt;
    const auto document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return std::nullopt;
    QVariantMap result;
    const auto object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it)
        result.insert(it.key(), decode(it.value()));
    return result;
}

QString safePath(const QString &path)
{
    return path + QStringLiteral(".safe");
}

/// Gives the file that is open, and whose bytes are on the disk, its second name, unless it isn't the one at `path` any
/// more. After a loss of power the file at `path` may be one whose bytes never came to the disk; this one is whole.
void markSafe(const QString &path, int descriptor)
{
    const auto from = QFile::encodeName(path);
    const auto to = QFile::encodeName(safePath(path));
    static std::atomic_int count = 0;
    const auto fresh = to + '-' + QByteArray::number(::getpid()) + '-' + QByteArray::number(++count);
    struct stat wanted {
    };
    struct stat linked {
    };
    const bool isThis = ::link(from.constData(), fresh.constData()) == 0 && ::fstat(descriptor, &wanted) == 0
        && ::stat(fresh.constData(), &linked) == 0 && wanted.st_ino == linked.st_ino;
    if (isThis)
        ::rename(fresh.constData(), to.constData());
    // It is still there when it isn't the file that was meant, or when that had the name already.
    ::unlink(fresh.constData());
}

/// Puts the file that is known to be on the disk back to `path`, and opens it; -1 if there is none or it is damaged as
/// well.
int takeSafe(const QString &path)
{
    const auto from = QFile::encodeName(safePath(path));
    const auto to = QFile::encodeName(path);
    const int descriptor = openToRead(safePath(path));
    if (descriptor >= 0 && valuesIn(descriptor) && ::link(from.constData(), to.constData()) == 0) {
        ::lseek(descriptor, 0, SEEK_SET);
        return descriptor;
    }
    if (descriptor >= 0)
        ::close(descriptor);
    return -1;
}

/// So that the names in it are on the disk.
void syncFolder(const QString &path)
{
    const int folder = ::open(QFile::encodeName(QFileInfo(path).absolutePath()).constData(), O_RDONLY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
}

void syncToDisk(const QString &path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        if (::fsync(descriptor) == 0) {
            // Not over a newer one that another write has just named.
            const ProcessLock lock(path + QStringLiteral(".lock"));
            markSafe(path, descriptor);
        }
        ::close(descriptor);
    }
    syncFolder(path);
}

} // namespace

FileSettingsStore::FileSettingsStore(const QString &path) : m_path(path)
{
    const auto folder = QFileInfo(path).absolutePath();
    QDir().mkpath(folder);
    if (QFile::exists(path)) {
        const ProcessLock lock(path + QStringLiteral(".lock"));
        reload(Damaged::setAside);
        // Nobody listens yet; whoever wants to know asks.
        m_damageIsUnannounced = false;
    }
    // A rename replaces the file, so it is the folder that has to be watched.
    m_watcher.addPath(folder);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FileSettingsStore::fileMayHaveChanged);
    if (QFile::exists(path))
        m_watcher.addPath(path);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FileSettingsStore::fileMayHaveChanged);
    // A renamed file is safe from a kill of the process at once. Getting it to the disk may take a while, and a window
    // that is being dragged writes many times a second, so that happens in the background when the writes have paused.
    m_syncTimer.setSingleShot(true);
    m_syncTimer.setInterval(200);
    connect(&m_syncTimer, &QTimer::timeout, this, [path] {
        QThreadPool::globalInstance()->start([path] { syncToDisk(path); });
    });
}

FileSettingsStore::~FileSettingsStore()
{
    setSeen(-1);
}

QVariant FileSettingsStore::value(const QString &key) const
{
    const std::scoped_lock guard(m_lock);
    return m_values.value(key);
}

QStringList FileSettingsStore::keys() const
{
    const std::scoped_lock guard(m_lock);
    return m_values.keys();
}

std::optional<QString> FileSettingsStore::damagedFile() const
{
    const std::scoped_lock guard(m_lock);
    return m_damaged;
}

std::optional<QString> FileSettingsStore::setValue(const QString &key, const QVariant &value)
{
    return change(key, value);
}

std::optional<QString> FileSettingsStore::remove(const QString &key)
{
    return change(key, std::nullopt);
}

std::optional<QString> FileSettingsStore::change(const QString &key, const std::optional<QVariant> &value)
{
    QStringList changed;
    std::optional<QString> failure;
    {
        const std::scoped_lock guard(m_lock);
        // The round trip through the file's form gives the value the type that a later start would see.
        const auto stored = value ? decode(encode(*value)) : QVariant();
        if (m_values.contains(key) == value.has_value() && isSame(m_values.value(key), stored) && stamp() == m_stamp)
            return std::nullopt;
        const ProcessLock lock(m_path + QStringLiteral(".lock"));
        if (!lock.isHeld())
            return QStringLiteral("The settings are locked by another program that stands still");
        changed = reload(Damaged::setAside);
        if (m_unreadable)
            return m_unreadable;
        // A file that was damaged is no longer there, and nobody else knows what it held.
        const bool isMissing = m_seen < 0 && !m_values.isEmpty();
        if (isMissing || m_values.contains(key) != value.has_value() || !isSame(m_values.value(key), stored)) {
            auto values = m_values;
            if (value)
                values.insert(key, stored);
            else
                values.remove(key);
            // Bytes are what a user has put together, such as the library: the loss of power must not leave an empty
            // file in its place. Switches and sizes are written many times a second while a window is dragged.
            const bool isPrecious = stored.typeId() == QMetaType::QByteArray;
            failure = write(values, isPrecious ? Durability::disk : Durability::process);
            if (!failure) {
                m_values = std::move(values);
                changed.append(key);
            }
        }
    }
    announce(changed);
    return failure;
}

QStringList FileSettingsStore::reload(Damaged damaged)
{
    m_unreadable.reset();
    if (stamp() == m_stamp)
        return {};
    int descriptor = openToRead(m_path);
    // A file that is there and can't be read isn't an empty one: what is known stays, and nothing replaces the file.
    if (descriptor < 0 && errno != ENOENT) {
        m_unreadable = qt_error_string(errno);
        return {};
    }
    auto values = descriptor >= 0 ? valuesIn(descriptor) : QVariantMap();
    if (!values && damaged == Damaged::leaveAlone) {
        // An editor may be in the middle of writing it; there will be another look.
        ::close(descriptor);
        return {};
    }
    if (!values) {
        ::close(descriptor);
        putAside();
        // What is known here is newer than what is known to be on the disk.
        descriptor = m_values.isEmpty() ? takeSafe(m_path) : -1;
        values = descriptor >= 0 ? valuesIn(descriptor) : m_values;
    }
    const auto fresh = values.value_or(QVariantMap());
    setSeen(descriptor);
    QStringList changed;
    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        if (!isSame(m_values.value(it.key()), it.value()))
            changed.append(it.key());
    }
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it) {
        if (!fresh.contains(it.key()))
            changed.append(it.key());
    }
    m_values = fresh;
    return changed;
}

void FileSettingsStore::putAside()
{
    const auto aside = m_path
        + QStringLiteral(".damaged-%1")
              .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")));
    if (QFile::rename(m_path, aside)) {
        m_damaged = aside;
        m_damageIsUnannounced = true;
    }
}

std::optional<QString> FileSettingsStore::write(const QVariantMap &values, Durability durability)
{
    QJsonObject object;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        object.insert(it.key(), encode(it.value()));
    const auto bytes = QJsonDocument(object).toJson();
    const auto temporary = m_path + QStringLiteral(".new");
    // What is there is a left-over, or nobody's business of ours: never written through.
    ::unlink(QFile::encodeName(temporary).constData());
    const int descriptor
        = ::open(QFile::encodeName(temporary).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return qt_error_string(errno);
    bool good = true;
    for (qsizetype done = 0; good && done < bytes.size();) {
        const auto count = ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        good = count > 0;
        done += good ? count : 0;
    }
    if (good && durability == Durability::disk)
        good = ::fsync(descriptor) == 0;
    if (!good || ::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(m_path).constData()) != 0) {
        const auto reason = qt_error_string(errno);
        ::close(descriptor);
        QFile::remove(temporary);
        return reason;
    }
    if (durability == Durability::disk) {
        markSafe(m_path, descriptor);
        syncFolder(m_path);
    }
    setSeen(descriptor);
    return std::nullopt;
}

void FileSettingsStore::setSeen(int descriptor)
{
    if (m_seen >= 0)
        ::close(m_seen);
    m_seen = descriptor;
    // Of the very file that was read or written, which may have been replaced since.
    struct stat status {
    };
    m_stamp = m_seen >= 0 && ::fstat(m_seen, &status) == 0 ? stampOf(status) : Stamp();
}

FileSettingsStore::Stamp FileSettingsStore::stamp() const
{
    struct stat status {
    };
    if (::stat(QFile::encodeName(m_path).constData(), &status) == 0)
        return stampOf(status);
    // Something that can't be looked at is not the absence of the file.
    return errno == ENOENT ? Stamp() : Stamp(0, -1, errno);
}

void FileSettingsStore::announce(const QStringList &keys)
{
    std::optional<QString> damaged;
    {
        const std::scoped_lock guard(m_lock);
        if (keys.isEmpty() && !m_damageIsUnannounced)
            return;
        if (QThread::currentThread() == thread() && std::exchange(m_damageIsUnannounced, false))
            damaged = m_damaged;
    }
    if (QThread::currentThread() != thread()) {
        {
            const std::scoped_lock guard(m_lock);
            m_unannounced.append(keys);
        }
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
        return;
    }
    if (damaged)
        Q_EMIT setAside(*damaged);
    m_syncTimer.start();
    for (const auto &key : keys)
        Q_EMIT changed(key);
}

void FileSettingsStore::customEvent(QEvent *)
{
    QStringList keys;
    {
        const std::scoped_lock guard(m_lock);
        keys.swap(m_unannounced);
    }
    announce(keys);
}

void FileSettingsStore::fileMayHaveChanged()
{
    QStringList changed;
    {
        const std::scoped_lock guard(m_lock);
        changed = reload(Damaged::leaveAlone);
    }
    if (!m_watcher.files().contains(m_path) && QFile::exists(m_path))
        m_watcher.addPath(m_path);
    announce(changed);
}

} // namespace quillnest
