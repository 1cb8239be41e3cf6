#include "window/MainWindow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>

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
        tagged<QLabel>(tag)->setText("Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tag, QAccessible::Name), u"Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tag, QAccessible::Description), QLatin1String(description));
    }
}

TEST_F(MainWindowTest, TheOpenButtonsMnemonicFollowsItsText)
{
    auto *button = tagged<QAbstractButton>(1011);
    QSignalSpy pressed(button, &QAbstractButton::clicked);
    const auto seen = [button] {
        button->grab(); // draws it
        return button->text();
    };

    // A mnemonic shows the button pressed for a moment before it counts as a click.
    EXPECT_EQ(seen(), u"Open");
    QTest::keyClick(&m_window, Qt::Key_O, Qt::AltModifier);
    EXPECT_TRUE(pressed.wait());

    button->setText("Close");
    EXPECT_EQ(seen(), u"Close");
    QTest::keyClick(&m_window, Qt::Key_O, Qt::AltModifier);
    EXPECT_FALSE(button->isDown());
    QTest::keyClick(&m_window, Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(pressed.wait());
    EXPECT_EQ(pressed.count(), 2);
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
    EXPECT_EQ(m_window.focusWidget(), tagged(1010));
}

TEST_F(MainWindowTest, TheUpdateBarNeverWalksBackUntilItIsReset)
{
    const auto *progress = m_window.findChild<QProgressBar *>("updateProgress");
    m_window.showUpdateProgress(42);
    m_window.showUpdateProgress(17);
    EXPECT_EQ(progress->value(), 42);

    m_window.showUpdateBusy();
    EXPECT_EQ(progress->maximum(), progress->minimum());
    m_window.showUpdateProgress(3);
    EXPECT_EQ(progress->maximum(), 100);
    EXPECT_EQ(progress->value(), 42);
    m_window.showUpdateProgress(250);
    EXPECT_EQ(progress->value(), 100);

    m_window.resetUpdateProgress();
    EXPECT_EQ(progress->value(), 0);
}

TEST_F(MainWindowTest, NothingMovesWhenTextsGrowAndTheDownloadBarComesAndGoes)
{
    const auto places = [this] {
        QApplication::processEvents();
        QList<QRect> result{m_window.geometry()};
        for (const auto *widget : m_window.centralWidget()->findChildren<QWidget *>()) {
            result += widget->geometry();
        }
        return result;
    };
    const QList<QRect> before = places();
    const auto *download = m_window.findChild<QProgressBar *>("downloadProgress");
    EXPECT_FALSE(download->isVisible());

    m_window.showDownloadProgress(5);
    m_window.showDownloadBusy();
    EXPECT_TRUE(download->isVisible());
    tagged<QAbstractButton>(1011)->setText("Close");
    for (const int tag : {1001, 1012, 1015}) {
        tagged<QLabel>(tag)->setText(QString("usbserial-LONG ").repeated(40));
    }
    for (const int tag : {1010, 1002}) {
        tagged<QComboBox>(tag)->addItem(QString(300, QLatin1Char('W')));
    }
    EXPECT_EQ(places(), before);

    m_window.hideDownloadProgress();
    EXPECT_FALSE(download->isVisible());
    EXPECT_EQ(places(), before);
}

} // namespace
