#include "window/MainWindow.h"

#include "tests/support/Eventually.h"
#include "window/StatusLine.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

namespace {

class MainWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_window.show();
        m_window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
    }

    template <typename Widget = QWidget>
    Widget *tagged(int tag) const
    {
        QList<Widget *> found = m_window.centralWidget()->findChildren<Widget *>();
        found.removeIf(
            [tag](const Widget *each) { return each->property("tag") != QVariant(tag); });
        return found.value(0);
    }
    QString spoken(int tag, QAccessible::Text what) const
    {
        return QAccessible::queryAccessibleInterface(tagged(tag))->text(what);
    }

    vorn::MainWindow m_window;
};

TEST_F(MainWindowTest, AScreenReaderIsToldWhatIsSeen)
{
    EXPECT_TRUE(spoken(2001, QAccessible::Name).contains(u"Update"));
    EXPECT_TRUE(spoken(2002, QAccessible::Name).contains(u"Download"));
    for (const char *title : {"Open", "Close"}) {
        tagged<QAbstractButton>(1011)->setText(QLatin1String(title));
        EXPECT_EQ(spoken(1011, QAccessible::Name), QLatin1String(title));
    }
    for (const auto &[tag, description] :
         {std::pair(1010, "Device"), std::pair(1002, "Firmware")}) {
        EXPECT_EQ(spoken(tag, QAccessible::Description), QLatin1String(description));
        const auto labels = QAccessible::queryAccessibleInterface(tagged(tag))->relations();
        ASSERT_EQ(labels.size(), 1);
        EXPECT_EQ(labels.first().first->text(QAccessible::Name), QLatin1String(description));
    }
    for (const auto &[tag, description] :
         {std::pair(1001, "Connection status"), std::pair(1012, "Firmware status"),
          std::pair(1015, "Update status")}) {
        tagged<vorn::StatusLine>(tag)->setText("Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tag, QAccessible::Name), u"Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tag, QAccessible::Description), QLatin1String(description));
    }
}

TEST_F(MainWindowTest, TheOpenButtonsMnemonicFollowsItsText)
{
    auto *button = tagged<QAbstractButton>(1011);
    QSignalSpy pressed(button, &QAbstractButton::clicked);
    for (const auto &[title, key] : {std::pair("Open", Qt::Key_O), {"Close", Qt::Key_C}}) {
        button->setText(title);
        button->grab(); // paints it
        EXPECT_EQ(button->text(), title);
        // A mnemonic shows the button pressed for a moment before the click.
        QTest::keyClick(&m_window, key, Qt::AltModifier);
        EXPECT_TRUE(pressed.wait());
    }
    QTest::keyClick(&m_window, Qt::Key_O, Qt::AltModifier);
    EXPECT_FALSE(button->isDown());
}

TEST_F(MainWindowTest, TheTabKeyFollowsTheThreeStepsAndEnterPressesOnlyTheButtonInFocus)
{
    QSignalSpy updates(tagged<QAbstractButton>(2001), &QAbstractButton::clicked);
    tagged(1010)->setFocus();
    for (const int tag : {1010, 1011, 1002, 2002, 2001}) {
        SCOPED_TRACE(tag);
        EXPECT_EQ(m_window.focusWidget(), tagged(tag));
        QTest::keyClick(m_window.focusWidget(), Qt::Key_Return);
        EXPECT_EQ(updates.count(), tag == 2001 ? 1 : 0);
        QTest::keyClick(m_window.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(m_window.focusWidget(), m_window.findChild<QWidget *>("logButton"));
    QTest::keyClick(m_window.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(m_window.focusWidget(), tagged(1010));
}

TEST_F(MainWindowTest, TheUpdateBarNeverGoesBackShowsEachPercentAndTellsTens)
{
    auto *progress = m_window.findChild<QProgressBar *>("updateProgress");
    m_window.showUpdateProgress(40);
    m_window.showUpdateProgress(10);
    EXPECT_EQ(progress->value(), 40);

    m_window.showUpdateBusy();
    EXPECT_EQ(progress->maximum(), progress->minimum());
    m_window.showUpdateProgress(3);
    EXPECT_EQ(progress->maximum(), 100);
    EXPECT_EQ(progress->value(), 40);
    m_window.showUpdateProgress(250);
    EXPECT_EQ(progress->value(), 100);

    m_window.resetUpdateProgress();
    EXPECT_EQ(progress->value(), 0);
    QSignalSpy told(progress, &QProgressBar::valueChanged);
    for (int percent = 1; percent <= 100; ++percent) {
        const QImage before = progress->grab().toImage();
        m_window.showUpdateProgress(percent);
        EXPECT_TRUE(progress->grab().toImage() != before) << percent;
    }
    EXPECT_EQ(told.count(), 10);
}

TEST_F(MainWindowTest, DetailsAreReadByTheirDescriptionAndWholeInTheToolTip)
{
    const QString text = QString("<b>no markup</b> ").repeated(30) + "end";
    m_window.showConnectionDetails(text);
    m_window.showFirmwareDetails(text);
    m_window.showUpdateDetails(text);
    QStringList found;
    for (auto *label : m_window.findChildren<QLabel *>()) {
        if (label->text() != text)
            continue;
        found += label->accessibleDescription();
        EXPECT_EQ(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), text);
        QHelpEvent pointed(QEvent::ToolTip, {}, label->mapToGlobal(QPoint(30, 5)));
        QApplication::sendEvent(label, &pointed);
        EXPECT_TRUE(QToolTip::text().contains(text.toHtmlEscaped()));
    }
    EXPECT_EQ(found, QStringList({"Connection details", "Firmware details", "Update details"}));
}

TEST_F(MainWindowTest, TheLogButtonShowsAndHidesThePanelAndTheCardsStay)
{
    const auto *panel = m_window.findChild<QPlainTextEdit *>();
    const auto *card = m_window.findChild<QWidget *>("updateCard");
    const QRect place = card->geometry();
    const int height = m_window.height();
    EXPECT_LE(height, 620);
    for (const bool shown : {true, false, true, false}) {
        m_window.findChild<QAbstractButton *>("logButton")->click();
        QApplication::processEvents();
        EXPECT_EQ(panel->isVisible(), shown);
        EXPECT_EQ(m_window.height() == height, !shown);
        EXPECT_LE(m_window.height(), m_window.screen()->availableSize().height());
        EXPECT_EQ(card->geometry(), place);
    }
}

TEST_F(MainWindowTest, ARunDisablesWhatCannotBeUsedAndGivesTheFocusBack)
{
    for (const bool movesOn : {false, true}) {
        tagged(2001)->setFocus();
        m_window.setUpdateRuns(true);
        for (const int tag : {2001, 1010, 1011, 1002, 2002}) {
            EXPECT_EQ(tagged(tag)->isEnabled(), tag != 2001 && tag != 1010) << tag;
            EXPECT_EQ(tagged(tag)->toolTip().isEmpty(), tagged(tag)->isEnabled()) << tag;
        }
        if (movesOn)
            tagged(1002)->setFocus();
        m_window.setUpdateRuns(false);
        EXPECT_TRUE(tagged(2001)->isEnabled() && tagged(2001)->toolTip().isEmpty());
        EXPECT_EQ(m_window.focusWidget(), tagged(movesOn ? 1002 : 2001));
    }
}

TEST_F(MainWindowTest, NothingMovesWhenTextsGrowAndTheDownloadBarComesAndGoes)
{
    const auto places = [this] {
        QApplication::processEvents();
        QList<QRect> result{m_window.geometry()};
        for (const auto *widget : m_window.centralWidget()->findChildren<QWidget *>())
            result += widget->geometry();
        return result;
    };
    const QList<QRect> before = places();
    const auto *download = m_window.findChild<QProgressBar *>("downloadProgress");
    EXPECT_FALSE(download->isVisible());

    m_window.showDownloadProgress(5);
    m_window.showDownloadBusy();
    EXPECT_TRUE(download->isVisible());
    tagged<QAbstractButton>(1011)->setText("Close");
    for (const int tag : {1001, 1012, 1015})
        tagged<vorn::StatusLine>(tag)->setText(QString("usbserial-LONG ").repeated(40));
    for (const int tag : {1010, 1002})
        tagged<QComboBox>(tag)->addItem(QString(300, QLatin1Char('W')));
    EXPECT_EQ(places(), before);

    m_window.hideDownloadProgress();
    EXPECT_FALSE(download->isVisible());
    EXPECT_EQ(places(), before);
}

// Counts a label's paint events and keeps the text that the last one showed.
struct PaintCounter : QObject
{
    bool eventFilter(QObject *label, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            ++count;
            lastText = static_cast<QLabel *>(label)->text();
        }
        return false;
    }

    int count = 0;
    QString lastText;
};

TEST_F(MainWindowTest, ManyTextsCostThirtyPaintsASecondAndTheLastIsPainted)
{
    auto *line = tagged<QLabel>(1015);
    PaintCounter paints;
    line->installEventFilter(&paints);
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 1000; ++i) {
        line->setText(QString::number(i));
        QApplication::processEvents();
    }
    EXPECT_LE(paints.count, 2 + clock.elapsed() / 30);
    EXPECT_TRUE(vorn::eventually([&] { return paints.lastText == u"999"; }));
}

TEST_F(MainWindowTest, AChangeOfThePaletteIsFollowed)
{
    const auto picture = [](vorn::MainWindow &window) {
        window.showUpdateProgress(42);
        QApplication::processEvents();
        return window.grab().toImage();
    };
    const QPalette lightPalette = QApplication::palette();
    QApplication::setPalette(QPalette(Qt::darkGray, Qt::black));
    vorn::MainWindow startedDark;
    startedDark.show();
    EXPECT_TRUE(picture(m_window) == picture(startedDark));
    QApplication::setPalette(lightPalette);
}

TEST_F(MainWindowTest, ReturnAndEscapeKeepTheUpdateAndAQuestionAboutThePortStaysOne)
{
    m_window.setUpdateRuns(true);
    QSignalSpy closePort(&m_window, &vorn::MainWindow::closePortAnyway);
    m_window.close();
    auto *const question = m_window.findChild<QMessageBox *>();
    ASSERT_TRUE(question);
    const QString aboutTheWindow = question->informativeText();
    // The focus that one question left on the other button is not that of the next one.
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Return}) {
        if (key == Qt::Key_Escape)
            QTest::keyClick(question->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(question->focusWidget(), key);
        EXPECT_FALSE(question->isVisible());
        m_window.askToClosePort();
        ASSERT_TRUE(question->isVisible());
    }
    const QString aboutThePort = question->informativeText();
    EXPECT_NE(aboutThePort, aboutTheWindow);
    EXPECT_FALSE(m_window.close());
    EXPECT_EQ(question->informativeText(), aboutThePort);

    m_window.setUpdateRuns(false);
    EXPECT_EQ(question->text(), "The update has ended.");
    EXPECT_EQ(closePort.count(), 0);
    for (QAbstractButton *button : question->buttons())
        if (question->buttonRole(button) == QMessageBox::DestructiveRole)
            button->click();
    EXPECT_FALSE(question->isVisible());
    EXPECT_EQ(closePort.count(), 1);
    EXPECT_TRUE(m_window.isVisible());
}

} // namespace
