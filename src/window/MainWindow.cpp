#include "window/MainWindow.h"

#include "ui_MainWindow.h"
#include "window/CloseQuestion.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEvent>
#include <QFileDialog>
#include <QFontDatabase>
#include <QIcon>
#include <QScreen>
#include <QStandardPaths>
#include <QTimerEvent>

#include <algorithm>
#include <array>
#include <utility>

// Without this the linker drops a static library's resources. The macro must stand outside of every
// namespace.
static void loadResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace {

// ms: at most 30 frames per second. More cannot be read, and each takes time from the answers to
// the device.
constexpr int kFrameTime = 34;
constexpr int kStartWidth = 688; // pixels, or more if the widgets need it
constexpr int kLogHeight = 160;  // pixels, if the screen has room

QIcon programIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128})
        icon.addFile(QStringLiteral(":/icons/%1.png").arg(size));
    return icon;
}

} // namespace

namespace vorn {

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::MainWindow>())
{
    loadResources();
    m_ui->setupUi(this);
    setCentralWidget(m_ui->view);

    QSizePolicy keepsItsPlace = m_ui->downloadProgress->sizePolicy();
    keepsItsPlace.setRetainSizeWhenHidden(true);
    m_ui->downloadProgress->setSizePolicy(keepsItsPlace);
    // Reading an image first loads the plug-in of every format that the system knows.
    connect(this, &MainWindow::didAppear, this, [this] { setWindowIcon(programIcon()); });
    // Not a checkable button: screen readers would call it a check box.
    connect(m_ui->logButton, &QPushButton::clicked, this,
            [this] { showLog(!m_ui->logPanel->isVisible()); });
    connect(m_ui->logCopyButton, &QPushButton::clicked, this, &MainWindow::logCopyRequested);
    connect(m_ui->logSaveButton, &QPushButton::clicked, this, &MainWindow::askWhereToSaveLog);
    fitSizes();
    resize(sizeHint().expandedTo({kStartWidth, 0}));
}

MainWindow::~MainWindow() = default;

void MainWindow::showUpdateProgress(int percent)
{
    m_ui->updateProgress->showPercent(percent);
}

void MainWindow::showUpdateBusy()
{
    m_ui->updateProgress->showBusy();
}

void MainWindow::resetUpdateProgress()
{
    m_ui->updateProgress->clear();
}

void MainWindow::showConnectionDetails(const QString &text)
{
    m_ui->connectionDetails->setText(text);
}

void MainWindow::showFirmwareDetails(const QString &text)
{
    m_ui->firmwareDetails->setText(text);
}

void MainWindow::showUpdateDetails(const QString &text)
{
    m_ui->updateDetails->setText(text);
}

void MainWindow::setUpdateRuns(bool runs)
{
    m_updateRuns = runs;
    if (runs)
        m_refocusUpdateButton = focusWidget() == m_ui->updateButton_2001;
    for (QWidget *control : {static_cast<QWidget *>(m_ui->updateButton_2001),
                             static_cast<QWidget *>(m_ui->deviceList_1010)}) {
        control->setDisabled(runs);
        control->setToolTip(runs ? tr("Not possible while an update is running") : QString());
    }
    if (runs)
        return;
    // The focus went to the next control by itself; a user who has moved on keeps theirs.
    if (std::exchange(m_refocusUpdateButton, false) && focusWidget() == m_ui->logButton)
        m_ui->updateButton_2001->setFocus();
    if (m_closeQuestion)
        m_closeQuestion->updateDidEnd();
}

void MainWindow::appendLog(const QString &line)
{
    m_ui->logPanel->appendPlainText(line);
}

void MainWindow::showLogNotice(const QString &text)
{
    m_ui->logNotice->setText(text);
}

// The window grows and shrinks with the panel, so that nothing else moves.
void MainWindow::showLog(bool shown)
{
    m_refocusUpdateButton = false;
    const int before = height();
    const int bottom = frameGeometry().bottom();
    if (shown && !m_ui->logPanel->testAttribute(Qt::WA_SetFont))
        m_ui->logPanel->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    for (QWidget *part :
         {static_cast<QWidget *>(m_ui->logPanel), static_cast<QWidget *>(m_ui->logCopyButton),
          static_cast<QWidget *>(m_ui->logSaveButton)})
        part->setVisible(shown);
    m_ui->logButton->setToolTip(shown ? tr("Hide the log")
                                      : tr("Show what happened since the start"));
    m_ui->logNotice->clear();
    // Now, so that the window's least size fits the panel.
    for (QLayout *each :
         {static_cast<QLayout *>(m_ui->columnLayout), m_ui->view->layout(), layout()})
        each->activate();
    if (isMaximized() || isFullScreen())
        return;
    if (!shown) {
        resize(width(), height() - std::exchange(m_grownForLog, 0));
        return;
    }
    const int least = minimumSizeHint().height() - before;
    const int wanted = least + kLogHeight - m_ui->logPanel->minimumSizeHint().height();
    const int room = screen()->availableGeometry().bottom() - bottom;
    m_grownForLog = std::max(0, std::min(wanted, std::max(room, least)));
    resize(width(), before + m_grownForLog);
}

void MainWindow::askWhereToSaveLog()
{
    auto *const dialog = new QFileDialog(this, tr("Save the log"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("txt"));
    dialog->setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->selectFile(QStringLiteral("vornupdater-log.txt"));
    connect(dialog, &QFileDialog::fileSelected, this, &MainWindow::logSaveRequested);
    dialog->open();
}

void MainWindow::askToClosePort()
{
    closeQuestion().ask(CloseQuestion::Subject::Device);
}

// Made when it is first needed: a message box loads the style's icons.
CloseQuestion &MainWindow::closeQuestion()
{
    if (m_closeQuestion)
        return *m_closeQuestion;
    m_closeQuestion = new CloseQuestion(this);
    connect(m_closeQuestion, &CloseQuestion::confirmed, this, [this](CloseQuestion::Subject what) {
        if (what == CloseQuestion::Subject::Device) {
            emit closePortAnyway();
            return;
        }
        m_updateRuns = false;
        close();
    });
    return *m_closeQuestion;
}

void MainWindow::showDownloadProgress(int percent)
{
    m_ui->downloadProgress->show();
    m_ui->downloadProgress->showPercent(percent);
}

void MainWindow::showDownloadBusy()
{
    m_ui->downloadProgress->show();
    m_ui->downloadProgress->showBusy();
}

void MainWindow::hideDownloadProgress()
{
    m_ui->downloadProgress->clear();
    m_ui->downloadProgress->hide();
}

void MainWindow::setDownloadAvailable(bool available, const QString &toolTip)
{
    m_ui->downloadButton_2002->setEnabled(available);
    m_ui->downloadButton_2002->setToolTip(toolTip);
}

// During an update the texts may change a thousand times a second. Drawing every change would delay
// the device's answers, which pass through the same thread.
bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest) {
        if (m_frame.isActive()) {
            m_repaintIsDue = true;
            return true;
        }
        m_frame.start(kFrameTime, Qt::PreciseTimer, this);
    }
    // Queued, since the picture is sent to the screen when all widgets have been painted.
    if (event->type() == QEvent::Paint && !std::exchange(m_hasAppeared, true))
        QMetaObject::invokeMethod(this, &MainWindow::didAppear, Qt::QueuedConnection);
    return QMainWindow::event(event);
}

void MainWindow::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_frame.timerId()) {
        QMainWindow::timerEvent(event);
        return;
    }
    m_frame.stop();
    if (std::exchange(m_repaintIsDue, false)) {
        QEvent request(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(this, &request);
    }
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitSizes();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(!m_updateRuns);
    if (m_updateRuns)
        closeQuestion().ask(CloseQuestion::Subject::Window);
}

void MainWindow::fitSizes()
{
    // A row's list and button have one height and all buttons the width of the widest, so that
    // nothing moves when a button's text changes.
    constexpr int kPadding = 8;
    const std::array<QPushButton *, 3> buttons{m_ui->openButton_1011, m_ui->downloadButton_2002,
                                               m_ui->updateButton_2001};
    const std::array<QComboBox *, 2> lists{m_ui->deviceList_1010, m_ui->firmwareList_1002};
    QSize size = m_ui->deviceList_1010->sizeHint();
    size.setWidth(0);
    for (const auto *button : buttons)
        size = size.expandedTo(button->sizeHint());
    for (auto *button : buttons)
        button->setMinimumSize(size + QSize(2 * kPadding, kPadding));
    for (auto *list : lists)
        list->setMinimumHeight(size.height() + kPadding);
}

} // namespace vorn
