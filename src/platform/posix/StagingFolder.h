#pragma once

#include <filesystem>
#include <optional>

namespace quillnest
{

/// A folder in which something is made that is then moved to its place in one step, and a lock that says that somebody
/// is at it. What a killed run has left goes with the next one; this one's own goes with the object. Any thread.
class StagingFolder
{
public:
    /// A new one in a folder that is there; nothing when the disk refuses.
    static std::optional<StagingFolder> make(const std::filesystem::path &parent);
    /// Removes what killed runs have left, but nothing in which somebody is at work.
    static void removeLeftOvers(const std::filesystem::path &parent);

    StagingFolder(StagingFolder &&other) noexcept;
    StagingFolder &operator=(StagingFolder &&) = delete;
    ~StagingFolder();

    /// An empty folder to make it in.
    std::filesystem::path tree() const { return m_root / "tree"; }

private:
    explicit StagingFolder(std::filesystem::path root) : m_root(std::move(root)) { }
    bool lock(int flags);
    bool isOld() const;

    std::filesystem::path m_root;
    int m_descriptor = -1;
};

} // namespace quillnest
