// Failures of real sessions that were recorded, and happen again.
#include "tests/update/SessionRig.h"

#include <QRegularExpression>

#include <tuple>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;

// The transcript's entries without their times.
QStringList entriesIn(const QString &text)
{
    QStringList entries = text.split(u'\n').filter(QRegularExpression("^\\d+\\.\\d{6} "));
    return entries.replaceInStrings(QRegularExpression("^\\S+ "), QString());
}

TEST(Replay, EndsEveryUpdateAsTheRecordedOneEnded)
{
    for (const auto &[name, kind, step, frame] :
         {std::tuple("refused-in-the-data", Kind::Refused, UpdateStep::Data, 1),
          {"silent-at-the-erase", Kind::TimedOut, UpdateStep::Erase, 0},
          {"unplugged-in-the-data", Kind::PortClosed, UpdateStep::Data, 0}}) {
        SCOPED_TRACE(name);
        QFile file(QStringLiteral(VORN_TRANSCRIPTS "/%1.txt").arg(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString recorded = QString::fromLatin1(file.readAll());
        BootParameters parameters = patientParameters();
        // Nobody awaits the query's last answer: it is to be there before the update's sync byte.
        parameters.resetPulse = 50ms;
        if (kind == Kind::TimedOut)
            parameters.eraseLimit = 200ms; // the recorded silence took 30 s
        DeviceOptions options = with(&DeviceOptions::replay, recorded);
        options.replugAfter = 0ms;
        SessionRig rig(options, parameters);
        for (const std::size_t time : {1, 2}) {
            rig.update(600);
            const UpdateResult result = rig.result(time);
            EXPECT_EQ(result.failure.kind, kind);
            EXPECT_EQ(result.step, step);
            EXPECT_EQ(result.frame, frame);
            EXPECT_EQ(entriesIn(rig.session->transcript()->text()), entriesIn(recorded));
            if (kind == Kind::PortClosed) {
                ASSERT_TRUE(eventually([&] { return rig.device.report().plugged; }));
                rig.open();
                ASSERT_TRUE(eventually([&] { return rig.queries == 1 + static_cast<int>(time); }));
            }
        }
        const ReplayReport report = rig.device.report().replay;
        EXPECT_EQ(report.replayed, report.entries);
        EXPECT_EQ(report.differences, 0);
    }
}

} // namespace
} // namespace vorn
