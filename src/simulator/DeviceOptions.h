#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace vorn {

// The steps of an exchange, each named after the frame that the device answers in it. Erase and
// Ready are the two answers that follow the download header.
enum class BootStep {
    Sync,        // the sync byte
    Connect = 1, // the connect command; its answer carries the model code
    Version,     // the version query
    Download,    // the download command
    Header,      // the download header. As a fault's step: everything after it, the erase included
    Frame,       // data frame number Fault::frame
    Last,        // the last data frame, which ends the update
    Erase,       // model codes 2 and above: the end of the flash erase
    Ready        // the release of the first data frame
};

// What the device does instead of answering a step.
enum class FaultKind {
    Silence,   // no answer, nor any that would follow it
    Refuse,    // FC
    Garbage,   // meaningless bytes
    Noise,     // meaningless bytes, then after 10 ms the right answer
    Late,      // the right answer, delayed by Fault::delay
    Duplicate, // the right answer twice, in one write
    Unplug     // the link disappears and the terminal hangs up
};

struct Fault
{
    BootStep step = BootStep::Sync;
    FaultKind kind = FaultKind::Silence;
    int frame = 0;                      // BootStep::Frame only: data frames count from 1
    int after = 0;                      // let the step pass this often first
    int times = 0;                      // then strike this often; 0: every time
    std::chrono::milliseconds delay{0}; // FaultKind::Late only
};

// How a simulated device behaves. The default is a faultless device that answers at once.
struct DeviceOptions
{
    // While the device is plugged in, `directory` holds a symbolic link `name` to its terminal.
    // Both empty: no link.
    QString directory{};
    QString name{};

    int modelCode = 8; // 0 to 255; from 2 on the device erases its flash after the header
    std::chrono::milliseconds eraseTime{0};
    std::chrono::milliseconds answerDelay{0}; // from a frame's last bit to its answer's first
    int baud = 0; // of the simulated line, at ten bits a byte; 0: bytes take no time
    qsizetype flashSize = qsizetype{16} << 20; // longer images are refused

    std::vector<int> connectPieces{};      // send the connect answer in pieces of these lengths
    std::chrono::milliseconds pieceGap{5}; // between two pieces
    bool joinEraseAnswers = false;         // send both answers to the header in one write

    // A transcript, or a log that contains one (docs/simulator.md): the device replays it, and only
    // the options directory, name and replugAfter apply. Empty: no replay.
    QString replay{};

    std::vector<Fault> faults{}; // for each step the first one that matches applies
    std::optional<std::chrono::milliseconds> replugAfter{}; // after being unplugged by a fault
};

// Parses STEP=KIND[,after=N][,times=N], for example "connect=refuse", "frame:3=unplug,times=1" or
// "last=late:500". Null, with the reason in *problem, when the text is not a fault.
std::optional<Fault> parseFault(const QString &text, QString *problem);

} // namespace vorn
