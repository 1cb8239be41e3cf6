// Gives each fuzz target the inputs that once made it fail: fuzz_cases FOLDER, where FOLDER/TARGET
// holds them. A target that finds fault aborts.

#include "fuzz/Fuzzing.h"

#include <cstdio>

#define X(target) extern "C" int fuzz_##target(const std::uint8_t *data, std::size_t size);
VORN_FUZZ_TARGETS
#undef X

int main(int argc, char **argv)
{
    vorn::require(argc == 2);
    const vorn::FuzzFiles cases = vorn::filesIn(QString::fromLocal8Bit(argv[1]));
    qsizetype count = 0;
    const auto replay = [&](const QString &target, auto run) {
        for (auto it = cases.begin(); it != cases.end(); ++it) {
            if (!it.key().startsWith(target + u'/') || it.key().endsWith(u'/'))
                continue;
            std::fprintf(stderr, "%s\n", qPrintable(it.key()));
            run(reinterpret_cast<const std::uint8_t *>(it.value().constData()),
                static_cast<std::size_t>(it.value().size()));
            ++count;
        }
    };
#define X(target) replay(QStringLiteral(#target), fuzz_##target);
    VORN_FUZZ_TARGETS
#undef X
    std::printf("%lld inputs\n", static_cast<long long>(count));
    return count == 0 ? 1 : 0;
}
