#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace vorn {

// The points of an exchange that the device answers. Each names the answer, not the frame alone:
// a refusal at Connect is what the updater meets while it waits to send its next frame.
enum class BootStep {
    Sync,     // the answer to the sync byte
    Connect,  // the four-byte answer that carries the model code
    Version,  // the answer to the version query
    Download, // the answer to the download command
    Header,   // everything after the download header: no erase and no answer but the fault's
    Erase,    // model codes 2 and above: the answer that ends the flash erase
    Ready,    // the answer that releases the first data frame (model codes 2 and above: the second)
    Frame,    // the answer to data frame number Fault::frame
    Last      // the answer to the last frame, which ends the update
};

// What happens in place of the answer to a step. Until the device has acknowledged a frame it takes
// any further byte but a sync byte as an error of the other side.
enum class FaultKind {
    Silence,   // no answer, and none that would follow it
    Refuse,    // the byte FC
    Garbage,   // bytes of no meaning
    Noise,     // bytes of no meaning, and after 10 ms the right answer
    Late,      // the right answer, held back for Fault::delay
    Duplicate, // the right answer twice, in one write
    Unplug     // the link disappears and the terminal hangs up
};

struct Fault
{
    BootStep step = BootStep::Sync;
    FaultKind kind = FaultKind::Silence;
    int frame = 0; // BootStep::Frame only: data frames count from 1
    int after = 0; // the first `after` times that the step is reached, nothing happens
    int times = 0; // then the fault strikes this often; 0: each time
    std::chrono::milliseconds delay{0}; // FaultKind::Late only
};

// How a simulated device behaves; the defaults are a faultless one that answers at once.
struct DeviceOptions
{
    // A symbolic link `name` to the terminal appears in `directory` when the device is plugged in.
    // Both empty: no link, the terminal is known by its own path only.
    QString directory;
    QString name;

    int modelCode = 8; // 0 to 255; from 2 on the device erases its flash after the header
    std::chrono::milliseconds eraseTime{0};
    std::chrono::milliseconds answerDelay{0}; // from a frame's last bit to its answer's first
    int baud = 0; // bits per second of the simulated line, ten bits a byte; 0: no pacing
    qsizetype flashSize = qsizetype{16} << 20; // a longer image is refused

    std::vector<int> connectPieces;        // lengths of the pieces that the connect answer comes in
    std::chrono::milliseconds pieceGap{5}; // between two such pieces
    bool joinEraseAnswers = false;         // the two answers around the erase in one write

    std::vector<Fault> faults;                            // the first one that fits a step strikes
    std::optional<std::chrono::milliseconds> replugAfter; // after each unplugging by a fault
    // A frame that stops in the middle for this long is given up; when its last byte was a sync
    // byte, that begins a new exchange.
    std::chrono::milliseconds resyncTime{200};
};

// What is wrong with the options, in words for a person; empty when nothing is.
QString deviceOptionsProblem(const DeviceOptions &options);

// Reads a fault in the program's notation, STEP=KIND[,after=N][,times=N], for example
// "connect=refuse", "frame:3=unplug,times=1", "last=late:500". Nothing, and the reason in
// *problem, when the text is not such a fault.
std::optional<Fault> parseFault(const QString &text, QString *problem);

} // namespace vorn
