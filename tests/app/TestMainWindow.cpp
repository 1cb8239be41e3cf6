#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <array>

#include "app/MainWindow.h"

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

    QWidgetList tagged(int tag) const
    {
        QWidgetList found;
        for (auto *widget : m_window.centralWidget()->findChildren<QWidget *>()) {
            if (widget->property("tag") == QVariant(tag)) {
                found += widget;
            }
        }
        return found;
    }
    template <typename Widget>
    Widget *control(int tag) const
    {
        return qobject_cast<Widget *>(tagged(tag).value(0));
    }
    QProgressBar *bar(const char *name) const
    {
        return m_window.findChild<QProgressBar *>(QLatin1String(name));
    }

    vorn::MainWindow m_window;
};

QString spoken(QWidget *widget, QAccessible::Text what)
{
    return QAccessible::queryAccessibleInterface(widget)->text(what);
}

TEST_F(MainWindowTest, AScreenReaderIsToldWhatIsSeen)
{
    EXPECT_TRUE(spoken(tagged(2001).first(), QAccessible::Name).contains(u"Update"));
    EXPECT_TRUE(spoken(tagged(2002).first(), QAccessible::Name).contains(u"Download"));
    for (const char *title : {"Open", "Close"}) {
        control<QAbstractButton>(1011)->setText(QLatin1String(title));
        EXPECT_EQ(spoken(tagged(1011).first(), QAccessible::Name), QLatin1String(title));
    }
    for (const auto &[tag, description] :
         {std::pair(1010, "Device"), std::pair(1002, "Firmware")}) {
        auto *list = tagged(tag).first();
        EXPECT_EQ(spoken(list, QAccessible::Description), QLatin1String(description));
        const auto labels = QAccessible::queryAccessibleInterface(list)->relations();
        ASSERT_EQ(labels.size(), 1);
        EXPECT_EQ(labels.first().first->text(QAccessible::Name), QLatin1String(description));
    }
    for (const auto &[tag, description] :
         {std::pair(1001, "Connection status"), std::pair(1012, "Firmware status"),
          std::pair(1015, "Update status")}) {
        control<QLabel>(tag)->setText("Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tagged(tag).first(), QAccessible::Name), u"Prompt:<b>a & b</b>");
        EXPECT_EQ(spoken(tagged(tag).first(), QAccessible::Description),
                  QLatin1String(description));
        EXPECT_EQ(tagged(tag).first()->accessibleName(), QString());
    }
}

TEST_F(MainWindowTest, TheOpenButtonsMnemonicFollowsItsText)
{
    auto *button = control<QAbstractButton>(1011);
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
    QSignalSpy updates(control<QAbstractButton>(2001), &QAbstractButton::clicked);
    tagged(1010).first()->setFocus();
    for (const int tag : {1010, 1011, 1002, 2002, 2001}) {
        SCOPED_TRACE(tag);
        EXPECT_EQ(m_window.focusWidget(), tagged(tag).first());
        QTest::keyClick(m_window.focusWidget(), Qt::Key_Return);
        EXPECT_EQ(updates.count(), tag == 2001 ? 1 : 0);
        QTest::keyClick(m_window.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(m_window.focusWidget(), tagged(1010).first());
}

TEST_F(MainWindowTest, TheUpdateBarNeverWalksBackUntilItIsReset)
{
    auto *progress = bar("updateProgress");
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
    EXPECT_FALSE(bar("downloadProgress")->isVisible());

    m_window.showDownloadProgress(5);
    m_window.showDownloadBusy();
    EXPECT_TRUE(bar("downloadProgress")->isVisible());
    control<QAbstractButton>(1011)->setText("Close");
    for (const int tag : {1001, 1012, 1015}) {
        control<QLabel>(tag)->setText(QString("usbserial-LONG ").repeated(40));
    }
    for (const int tag : {1010, 1002}) {
        control<QComboBox>(tag)->addItem(QString(300, QLatin1Char('W')));
    }
    EXPECT_EQ(places(), before);

    m_window.hideDownloadProgress();
    EXPECT_FALSE(bar("downloadProgress")->isVisible());
    EXPECT_EQ(places(), before);
}

} // namespace
