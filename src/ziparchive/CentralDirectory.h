#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace vorn {

class ArchiveFile;

// An archive's whole directory, for the checks that minizip, which sees one entry at a time, cannot
// make: the end record's entry count, the total of the claimed sizes, and where each entry's data
// must end.
class CentralDirectory
{
public:
    // Nothing when the directory is damaged, contradicts its end record or has more than
    // `maxEntries` entries; `reason` then says which, for the log.
    static std::optional<CentralDirectory> read(ArchiveFile &file, quint64 maxEntries,
                                                QString &reason);

    std::size_t count() const { return m_sizes.size(); }
    // The uncompressed size that entry `index` (in directory order) claims, and the sum of all.
    quint64 size(std::size_t index) const { return m_sizes[index]; }
    quint64 totalSize() const { return m_totalSize; }
    // The file position where the data of entry `index` must end at the latest: the start of the
    // next entry or of the directory. Entries with the same start get no room at all.
    quint64 dataEnd(std::size_t index) const { return m_dataEnds[index]; }

private:
    std::vector<quint32> m_sizes;
    std::vector<quint64> m_dataEnds;
    quint64 m_totalSize = 0;
};

} // namespace vorn
