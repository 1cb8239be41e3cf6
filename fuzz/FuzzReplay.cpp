// A saved log as vornsim replays it, and the bytes that an updater then sends. The entries found
// must be those that a plain reading of docs/protocol.md finds.
//
// The input: the log, a NUL, then reads: a length, bytes.

#include "fuzz/Fuzzing.h"
#include "simulator/Replay.h"

#include <QByteArrayList>

#include <optional>

namespace {

using vorn::require;

bool isNumber(const QByteArray &text, qsizetype least, qsizetype most)
{
    return text.size() >= least && text.size() <= most &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isBytes(const QByteArray &text)
{
    if (text.isEmpty() || text.size() % 3 != 0)
        return false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isDigit = QByteArrayView("0123456789ABCDEF").contains(text[i]);
        if (i % 3 == 0 ? text[i] != ' ' : !isDigit)
            return false;
    }
    return true;
}

// What an entry does: '>', '<' or 'g'; 0 for a line that is none.
char entryIn(QByteArray line)
{
    if (line.endsWith('\r'))
        line.chop(1);
    const qsizetype space = line.indexOf(' ');
    const QByteArray time = line.left(space);
    const qsizetype point = time.indexOf('.');
    if (space < 0 || point < 0 || !isNumber(time.left(point), 1, 9) ||
        !isNumber(time.mid(point + 1), 6, 6))
        return 0;
    const QByteArray event = line.mid(space + 1);
    if (event == "gone")
        return 'g';
    if (event.startsWith("> (") && event.endsWith(" bytes)") && event.size() > 10)
        return isNumber(event.sliced(3, event.size() - 10), 1, 9) ? '>' : 0;
    return (event.startsWith('>') || event.startsWith('<')) && isBytes(event.mid(1)) ? event[0] : 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray input = vorn::FuzzInput(data, size).rest().toByteArray();
    const qsizetype end = input.indexOf('\0');
    const QByteArray text = input.left(end);

    int entries = 0;
    for (const QByteArray &line : text.split('\n'))
        if (const char entry = entryIn(line); entry == '>' || (entry != 0 && entries > 0))
            ++entries;
    vorn::Replay replay(QString::fromUtf8(text));
    require(replay.report().entries == entries);

    vorn::FuzzInput reads(data + text.size() + 1,
                          end < 0 ? 0 : size - static_cast<std::size_t>(end) - 1);
    qsizetype taken = 0;
    while (!reads.isAtEnd()) {
        const QByteArrayView bytes = reads.bytes(reads.byte());
        const vorn::Replay::Taken answers = replay.take(bytes);
        taken += bytes.size();
        require(!answers.begins || entries > 0);
        require(answers.answers.size() < static_cast<std::size_t>(std::max(entries, 1)));
        for (std::size_t i = 0; i < answers.answers.size(); ++i)
            replay.answered();
    }
    const vorn::ReplayReport &report = replay.report();
    require(report.entries == entries && report.replayed <= entries);
    require(report.differences <= taken + 1);
    return 0;
}
