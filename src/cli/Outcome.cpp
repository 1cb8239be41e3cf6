#include "cli/Outcome.h"

#include <QLatin1StringView>

namespace vorn {

ExitCode exitCodeOf(const Explanation &why)
{
    struct Row
    {
        QLatin1StringView word;
        ExitCode code;
    };
    static constexpr Row kRows[] = {
        {QLatin1StringView("no-device"), kNoDevice},
        {QLatin1StringView("no-permission"), kCannotOpen},
        {QLatin1StringView("busy"), kCannotOpen},
        {QLatin1StringView("cannot-open"), kCannotOpen},
        {QLatin1StringView("no-answer"), kNoAnswer},
        {QLatin1StringView("refused"), kRefused},
        {QLatin1StringView("unplugged"), kUnplugged},
        {QLatin1StringView("bad-image"), kBadImage},
        {QLatin1StringView("wrong-model"), kBadImage},
        {QLatin1StringView("download-failed"), kDownloadFailed},
        {QLatin1StringView("interrupted"), kInterrupted},
    };
    for (const Row &row : kRows)
        if (row.word == QLatin1StringView(why.word))
            return row.code;
    return why.cause == Cause::None ? kDone : kNoAnswer;
}

} // namespace vorn
