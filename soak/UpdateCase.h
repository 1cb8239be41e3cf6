#pragma once

#include "tests/update/ScriptedLine.h"
#include "update/UpdateRun.h"

#include <array>
#include <optional>

namespace vorn {

// The device sends these chunks instead of its answer, for which "=" stands, and "/" for its single
// bytes, the first chunk after `after` and each further one after `gap` more. Without the answer
// nothing follows.
ScriptedLine::Fault play(const QByteArrayList &chunks, std::chrono::milliseconds after = 0ms,
                         std::chrono::milliseconds gap = 0ms);

// An update over a scripted line, and what its observer was told.
struct ScriptedUpdate final : UpdateObserver
{
    ScriptedUpdate(int modelCode, QByteArray itsImage, std::chrono::milliseconds latency = 0ms)
        : line(modelCode, latency), image(std::move(itsImage))
    {
    }

    UpdateResult update(const BootParameters &parameters = kVornBoot);
    bool deviceHoldsImage() const { return line.isComplete && line.image == image; }

    void targetVersionDidArrive(qint32 version) override { targetVersion = version; }
    void updateDidProgress(const UpdateProgress &progress) override
    {
        awaited = progress;
        waitsForErase = waitsForErase || progress.step == UpdateStep::Erase;
        if (progress.step == UpdateStep::Data)
            percents.push_back(progress.percent);
    }
    void updateDidEnd(const UpdateResult &) override { ++ends; }

    ScriptedLine line;
    QByteArray image;
    UpdateFailure failure;
    std::chrono::milliseconds readingTime{};
    UpdateResult result;
    qint32 targetVersion = -1;
    std::vector<int> percents;
    UpdateProgress awaited;
    bool waitsForErase = false;
    int ends = 0;
};

// Something that goes wrong with the answer to one step, and how an update ends because of it.
struct LineFault
{
    const char *name;
    UpdateFailureKind ending;
    QByteArrayList chunks = {};         // as for play()
    LineEvent event = LineEvent::Chunk; // happens instead, unless it is this
    bool losesFrame = false;            // the device has not taken the frame
    bool atErase = true;                // may strike the end of the erase
    std::optional<BootStep> only = {};  // strikes no other step
    enum class Time { None, AroundLimit, AnswerGap } time = Time::None; // when the chunks come

    bool strikes(BootStep step) const
    {
        return only ? step == *only : atErase || step != BootStep::Erase;
    }
};
const std::vector<LineFault> &lineFaults();

// An update with everything that goes wrong in it. Its end follows from that, and is compared with
// the end that runUpdate() comes to.
struct UpdateCase
{
    struct Fault
    {
        const LineFault *kind;
        ScriptedLine::Step step;
        int time = 0; // of a fault that has one, in milliseconds
    };

    int modelCode = 8;
    int bytes = 750;           // in the image
    int image = 0;             // 0: imageOf(), otherwise random bytes from this seed
    int latency = 1;           // of each answer; this and all below in milliseconds
    int reading = 0;           // the image takes so long to read
    int early = 0;             // a refusal arrives so long after the reset; 0: none
    int gone = 0;              // the port closes half a millisecond later than this; 0: it does not
    int abandoned = 0;         // the same for the update being abandoned
    std::vector<Fault> faults; // one for a step at most

    // A case's numbers; the case cannot do with less than `least`.
    struct Number
    {
        const char *name;
        int UpdateCase::*value;
        int least;
    };
    static const std::array<Number, 8> &numbers();

    static UpdateCase random(unsigned seed);
    // A case as one line: "model=8 bytes=750 late:300@erase refusal@frame:2". Numbers that are not
    // named are 0. Nothing if the text is no case.
    static std::optional<UpdateCase> fromText(const QString &text);
    QString text() const;

    struct Outcome
    {
        QString complaint; // what was wrong; empty if all was right
        UpdateFailureKind ending = UpdateFailureKind::None;
        std::vector<const LineFault *> struck;
    };
    Outcome run() const;

private:
    struct Step
    {
        BootStep device;
        UpdateStep step;
        std::chrono::milliseconds limit;
        int frame = 0; // from 1
    };
    struct Expected
    {
        UpdateFailureKind ending = UpdateFailureKind::None;
        Step at{};
        std::chrono::milliseconds elapsed{};
        bool deviceHoldsImage = false;
        bool versionIsWhole = true; // nothing cut the answer that contains it
    };
    const Fault *faultAt(BootStep step, int frame) const;
    std::vector<Step> steps() const;
    Expected expected() const;
};

} // namespace vorn
