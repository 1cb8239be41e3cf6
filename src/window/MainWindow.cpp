#include "window/MainWindow.h"

#include "ui_MainWindow.h"
#include "window/CloseQuestion.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEvent>
#include <QIcon>
#include <QTimerEvent>

#include <algorithm>
#include <array>
#include <utility>

// A static library's resources are left out of a program unless something names them, and that only
// works outside of every namespace.
static void loadResources()
{
    Q_INIT_RESOURCE(icons);
}

namespace {

// As often as screens show a new picture.
constexpr int frameTime = 16; // ms

QIcon programIcon()
{
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/%1.png").arg(size), QSize(size, size));
    return icon;
}

} // namespace

namespace vorn {

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), m_closeQuestion(new CloseQuestion(this)),
      m_ui(std::make_unique<Ui::MainWindow>())
{
    connect(m_closeQuestion, &CloseQuestion::closeAnyway, this, [this] {
        m_updateRuns = false;
        close();
    });

    loadResources();
    m_ui->setupUi(this);
    setCentralWidget(m_ui->view);
    setWindowIcon(programIcon());

    m_ui->downloadProgress->keepPlaceWhenHidden();
    m_ui->downloadProgress->hide();
    alignControls();
    resize(std::max(width(), sizeHint().width()), sizeHint().height());
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

void MainWindow::setUpdateRuns(bool runs)
{
    m_updateRuns = runs;
    if (!runs)
        m_closeQuestion->updateDidEnd();
}

void MainWindow::showDownloadProgress(int percent)
{
    m_ui->downloadProgress->showPercent(percent);
    m_ui->downloadProgress->show();
}

void MainWindow::showDownloadBusy()
{
    m_ui->downloadProgress->showBusy();
    m_ui->downloadProgress->show();
}

void MainWindow::hideDownloadProgress()
{
    m_ui->downloadProgress->clear();
    m_ui->downloadProgress->hide();
}

void MainWindow::setDownloadAvailable(bool available, const QString &tooltip)
{
    m_ui->downloadButton_2002->setEnabled(available);
    m_ui->downloadButton_2002->setToolTip(tooltip);
}

void MainWindow::setStatusTone(Line line, Tone tone)
{
    switch (line) {
    case Line::Connection:
        m_ui->connectText_1001->setTone(tone);
        break;
    case Line::Firmware:
        m_ui->perText_1012->setTone(tone);
        break;
    case Line::Update:
        m_ui->updateText_1015->setTone(tone);
        break;
    }
}

// During an update texts may change a thousand times a second, and drawing each would hold up the
// device's answers, which pass through the same thread.
bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::UpdateRequest) {
        if (m_frame.isActive()) {
            m_frameWaits = true;
            return true;
        }
        m_frame.start(frameTime, Qt::PreciseTimer, this);
    }
    return QMainWindow::event(event);
}

void MainWindow::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_frame.timerId()) {
        QMainWindow::timerEvent(event);
        return;
    }
    m_frame.stop();
    if (std::exchange(m_frameWaits, false)) {
        QEvent request(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(this, &request);
    }
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        alignControls();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(!m_updateRuns);
    if (m_updateRuns)
        m_closeQuestion->ask();
}

// One height for what stands in a row, one column of buttons as wide as the widest text: the places
// stay whatever a button says.
void MainWindow::alignControls()
{
    constexpr int air = 8;
    const std::array<QPushButton *, 3> buttons{m_ui->openButton_1011, m_ui->downloadButton_2002,
                                               m_ui->updateButton_2001};
    const std::array<QComboBox *, 2> lists{m_ui->deviceList_1010, m_ui->firmwareList_1002};
    QSize size = m_ui->deviceList_1010->sizeHint();
    size.setWidth(0);
    for (const auto *button : buttons)
        size = size.expandedTo(button->sizeHint());
    for (auto *button : buttons)
        button->setMinimumSize(size + QSize(2 * air, air));
    for (auto *list : lists)
        list->setMinimumHeight(size.height() + air);
}

} // namespace vorn
