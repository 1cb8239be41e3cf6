#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace vorn {

class ArchiveFile;

// An archive's directory as a whole, for the checks that minizip, which sees one entry at a time,
// cannot make: that the end record counts the entries there are, what they claim together, and
// where the data of each must end. Reads nothing but the directory.
class CentralDirectory
{
public:
    // Nothing when the directory is damaged, disagrees with its end record or has more than
    // `maxEntries` entries; `reason` then says which (for the log).
    static std::optional<CentralDirectory> read(ArchiveFile &file, quint64 maxEntries,
                                                QString &reason);

    std::size_t count() const { return m_sizes.size(); }
    // The uncompressed size that entry `index` (in the directory's order) claims, and the sum of
    // all.
    quint64 size(std::size_t index) const { return m_sizes[index]; }
    quint64 totalSize() const { return m_totalSize; }
    // The file position that the data of entry `index` may reach but not pass: where the next entry
    // or the directory begins. Entries that share their beginning get that beginning, so that none
    // of them fits.
    quint64 dataEnd(std::size_t index) const { return m_dataEnds[index]; }

private:
    std::vector<quint32> m_sizes;
    std::vector<quint64> m_dataEnds;
    quint64 m_totalSize = 0;
};

} // namespace vorn
