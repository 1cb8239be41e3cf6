#pragma once

#include "firmware/PackageProblem.h"
#include "platform/DeviceNode.h"
#include "update/UpdateResult.h"

#include <QString>

#include <chrono>
#include <span>

// Why something failed or nothing goes on, and what to do about it: the one table that every front
// end takes its words from, decided from recorded facts alone. docs/troubleshooting.md lists the
// same rows.
namespace vorn {

enum class Cause {
    None,

    // Starting the program
    RunsAsRoot,

    // Finding a device
    NoDevice,
    UnsuitableDevice, // %1 name
    SecondDevice,     // %1 the other device's name, %2 the current one's
    FixedChoice,      // %1 the current device's name
    StaleButton,
    DeviceNotFound,   // %1 what was named
    SeveralDevices,   // %1 names
    VanishedSoon,     // %1 name, %2 seconds
    VanishedToBrltty, // %1 name, %2 seconds

    // Opening and closing. %1 is the device node.
    NodeMissing,
    NodeNotPermitted,   // %2 the node's group
    NodeNotForGroups,   // %2 mode
    HeldByProgram,      // %2 program, %3 process
    HeldByModemManager, // %2 process
    HeldByBrltty,       // %2 process
    HeldByUnknown,
    MayBeHeldByModemManager,
    MayBeHeldByBrltty,
    NoTerminal,
    CannotOpen,       // %2 the system's text
    SpeedNotPossible, // %2 baud
    DoesNotClose,
    ClosedByItself,
    PortFailed, // %1 the system's text

    // Starting an update
    DeviceNotOpen,
    NoImageChosen,
    ImageUnreadable, // %1 path, %2 the system's text
    ImageEmpty,      // %1 path
    ImageTooLong,    // %1 path
    WrongModel,      // %1 path, %2 the device's model code

    // Updating. %1 is what was not acknowledged, %2 seconds, %3 the system's text.
    SilentButIntact,
    SilentAndErased,
    PortFailedButIntact,
    PortFailedAndErased,
    RefusedButIntact,
    RefusedAndErased,
    GoneButIntact,
    GoneAndErased,
    InterruptedButIntact,
    InterruptedAndErased,

    // Asking for the model, likewise
    QuerySilent,
    QueryRefused,
    QueryGone,

    // Firmware files
    NoFirmware,         // %1 folder
    NoFirmwareNoServer, // %1 folder
    FolderUnreadable,   // %1 folder, %2 the system's text
    NoFirmwareForModel, // %1 model code

    // Downloading. %1 is the server unless said otherwise.
    NoNetwork,
    NameNotFound,
    Unreachable, // %2 the network error's number
    ProxyFailed, // %2 likewise
    ConnectionLost,
    ServerSilent, // %2 seconds
    TooSlow,      // %2 seconds
    Certificate,  // %2 the check that failed
    Encryption,
    InsecureRedirect,
    BadResponse,    // %2 the network error's number
    HttpStatus,     // %2 status
    UnusableName,   // %1 suggested file name
    TooLarge,       // %1 file or entry
    NotAnArchive,   // %1 file
    BadEntry,       // %1 entry
    EntryOutside,   // %1 entry
    EntryNameTaken, // %1 entry
    Conflict,       // %1 path
    NoSpace,        // %1 path
    NoRights,       // %1 path
    FileSystem,     // %1 path, %2 the system's text
    NoCertificates, // %1 path
    DownloadInterrupted,
    NoServer,
};

// A row: in English, before translation.
struct CauseRow
{
    Cause cause;
    // For programs that read the command line's output: never changes, and decides the exit code.
    // Empty for causes that end no command.
    const char *word;
    const char *what;
    const char *cure;
    const char *terminalCure = nullptr; // where the window's cure names its buttons
};
std::span<const CauseRow> causeTable();

// A row in the user's language, with its places filled. Control characters in what fills them, a
// name that a server chose for example, are replaced.
struct Explanation
{
    Cause cause = Cause::None;
    QString what{};
    QString cure{};
    QString terminalCure{};
    const char *word = "";

    // One line: the cause, then the cure, for the window and for the command line.
    QString text() const;
    QString terminalText() const;
};
Explanation explain(Cause cause, const QStringList &places = {});

// Why a device node could not be opened: `code` is the errno. Reads what the system shows of the
// node and of the processes that hold it, which takes some milliseconds: not for the main thread.
Explanation explainOpening(const QString &path, int code);
// The same from facts.
struct OpeningFacts
{
    QString path;
    int code = 0; // errno
    DeviceNodeFacts node;
    QList<NodeHolder> holders;
    // Of the system's programs that are known to take serial devices, those that run. Their open
    // files are hidden from ordinary users.
    QStringList suspects;
};
Explanation explainOpening(const OpeningFacts &facts);

// An error of an open port: `code` is the errno.
Explanation explainPortError(int code);

// A device that was unplugged so soon after it was plugged in has a reason.
inline constexpr std::chrono::seconds kSoon{5};
Explanation explainVanishing(const QString &name, std::chrono::milliseconds after, bool brlttyRuns);

// Of a success: Cause::None.
Explanation explainUpdate(const UpdateResult &result);
Explanation explainVersionQuery(const UpdateResult &result);
// Why the firmware folder offers no file: `error` is the errno of reading it, 0 if it was read.
Explanation explainNoFirmware(const QString &folder, int error, bool hasPackageServer);
// `hasNetwork`: whether the machine has a network at all.
Explanation explainDownload(const PackageProblem &problem, bool hasNetwork = true);

// Whether the machine has a connection at all, beside itself.
bool hasNetwork();

// What an update waits for at a step, as it stands in the texts: "the erase command", or "data
// frame 3 of 40".
QString nameOfStep(UpdateStep step, qint64 frame = 0, qint64 frames = 0);
// A node's mode as chmod takes it: "0660".
QString octal(unsigned mode);
// Seconds as a person reads them: with a decimal below ten.
QString secondsText(std::chrono::milliseconds time);

} // namespace vorn
