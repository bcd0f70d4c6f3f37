#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillnest
{

/// A zip archive that is open for reading: a package, and what else comes from outside. What it says of itself is not
/// believed: no size or count that it declares decides how much is allocated or done. One thread at a time.
class OpenArchive
{
public:
    using Bytes = std::vector<std::uint8_t>;

    virtual ~OpenArchive() = default;

    /// The names of all entries, folders included: in the order of the archive's directory, byte for byte, a name that
    /// comes twice twice. They live as long as this.
    virtual const std::vector<std::string_view> &names() const = 0;

    /// What the entry of this name holds. The name is taken literally. Of entries that share a name it is what they
    /// hold one after the other; of a broken entry what comes out of it up to the break. Empty if there is none, if it
    /// is encrypted or packed in a way that no package uses, or if it holds more than `limit` bytes. Blocks.
    virtual Bytes read(std::string_view name, std::size_t limit);

    /// The same of all entries whose names fit a pattern, in which "*" stands for any characters, slashes included, and
    /// "?" for any one: the information file of an iOS app is "Payload/*.app/Info.plist".
    Bytes readMatching(std::string_view pattern, std::size_t limit);

protected:
    /// What follows are the entries of one reading, which take together what a reading of `limit` bytes may take.
    virtual void begin(std::size_t) { }
    /// Adds what an entry holds to `bytes`; false if these would become more than `limit`.
    virtual bool append(std::size_t index, std::size_t limit, Bytes &bytes) = 0;
};

/// The host's archives, all of them zip files. Blocks; any thread but the main one.
class Archives
{
public:
    virtual ~Archives() = default;

    /// Opens an archive; null if there is none that can be read.
    virtual std::unique_ptr<OpenArchive> open(const std::string &path) = 0;

    /// Unpacks an archive into a folder that is there, over what lies in it, with the files' permissions and the links
    /// that stay inside. Nothing is written outside the folder, and what is written appears there only when all has
    /// been unpacked. False for an archive that is broken or encrypted, that doesn't fit on the disk, or that holds a
    /// name or a link that leads out of the folder.
    virtual bool unpack(const QString &archive, const QString &folder) = 0;

    /// A file or a folder that is there, and the name it gets in an archive.
    struct Item {
        QString name;
        QString path;
    };

    /// Packs these, and what lies in those that are folders, with permissions and links as they are. The archive
    /// appears in one step, in the place of one that was there. False if there is nothing to pack, if any of it can't
    /// be read or is neither file, folder nor link, or if the disk refuses; then nothing has changed.
    virtual bool pack(const std::vector<Item> &items, const QString &archive) = 0;

    /// Packs what lies in a folder, in the order of the names.
    bool packFolder(const QString &folder, const QString &archive);
};

} // namespace quillnest
