#pragma once

#include "platform/Archives.h"
#include "platform/posix/ZipSource.h"

#include <functional>
#include <span>

namespace quillnest
{

/// An open zip archive, by libzip.
class ZipReader : public OpenArchive
{
public:
    /// Null if there is no archive that can be read.
    static std::unique_ptr<ZipReader> open(const std::string &path);
    ~ZipReader() override;

    const std::vector<std::string_view> &names() const override { return m_names; }

    /// What the archive says of an entry.
    struct Facts {
        /// As a Unix host keeps it; 0 where another host has written the archive.
        std::uint32_t mode = 0;
        std::int64_t modified = 0;
        /// Of what is stored, which is as much as is read at most.
        std::uint64_t storedSize = 0;
        bool isFromDos = false;
    };
    Facts facts(std::size_t index) const;
    /// Of the whole archive.
    std::uint64_t size() const { return m_source.size(); }

    enum class Ending {
        /// All of it, and it is what was packed.
        whole,
        /// There would be more, or it isn't what was packed.
        broken,
        /// The taker wanted no more.
        stopped,
    };
    /// Hands what an entry holds, piece by piece, to a taker that answers whether it wants more. `expected` is as much
    /// as the taker would take, and bounds how much is read for it.
    using Taker = std::function<bool(std::span<const std::uint8_t>)>;
    Ending stream(std::size_t index, std::uint64_t expected, const Taker &taker);

protected:
    void begin(std::size_t limit) override;
    bool append(std::size_t index, std::size_t limit, Bytes &bytes) override;

private:
    ZipReader() = default;
    bool openFile(const std::string &path);
    bool isReadable(std::size_t index, zip_stat_t &facts) const;
    /// `stream` within the allowance that is left.
    Ending drain(std::size_t index, const Taker &taker);

    ZipSource m_source;
    zip_t *m_archive = nullptr;
    std::vector<std::string_view> m_names;
};

} // namespace quillnest
