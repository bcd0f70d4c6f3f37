#include "launcher/setup/RuntimeSetupView.h"

#include "fakes/FakeNetwork.h"
#include "fakes/FakePlatform.h"
#include "fakes/InPoints.h"
#include "launcher/setup/LicenceSheet.h"
#include "look/Palette.h"
#include "look/ProgressBar.h"
#include "look/PushButton.h"
#include "look/Spinner.h"
#include "platform/HostPlatform.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

using Provisioner = AndroidRuntimeProvisioner;

const QUrl tools(QStringLiteral("https://dl.google.com/android/repository/repository2-3.xml"));
const QUrl images(QStringLiteral("https://dl.google.com/android/repository/sys-img/android/sys-img2-3.xml"));

QByteArray package(const QByteArray &path, const QByteArray &size)
{
    return "<remotePackage path='" + path + "'><revision><major>3</major></revision><display-name>The " + path.left(8)
        + "</display-name><uses-license ref='android-sdk-license'/><archives><archive><complete><size>" + size
        + "</size><checksum>00</checksum><url>a.zip</url></complete></archive></archives></remotePackage>";
}

class RuntimeSetupViewTest : public ::testing::Test
{
protected:
    RuntimeSetupViewTest()
    {
        fakes.platform.network = network;
        fakes.platform.symbols = hostSymbols();
        network->answers[tools]
            = {200,
               "<r><license id='android-sdk-license'>Terms\n  &lt;b&gt;as written&lt;/b&gt;</license>"
                   + package("platform-tools", "6500000") + package("emulator", "300000000") + "</r>"};
        network->answers[images]
            = {200, "<r>" + package("system-images;android-35;default;x86_64", "1200000000") + "</r>"};
        provisioner = std::make_unique<Provisioner>(fakes.platform);
        panel.resize(390, 760);
        auto *layout = new QVBoxLayout(&panel);
        view = new RuntimeSetupView(fakes.platform, *provisioner, &panel);
        layout->addWidget(view);
        layout->addStretch(1);
    }

    void settle()
    {
        fakes.settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// On screen, as far as the question.
    void offer()
    {
        panel.show();
        settle();
    }

    bool shows(const QString &text) const
    {
        for (const auto *label : panel.findChildren<QLabel *>()) {
            if (label->isVisible() && label->text() == text)
                return true;
        }
        return false;
    }
    PushButton *button(const char *name) const
    {
        for (auto *candidate : panel.findChildren<PushButton *>()) {
            if (candidate->isVisible() && candidate->accessibleName() == QString::fromUtf8(name))
                return candidate;
        }
        return nullptr;
    }
    /// The button on the licence sheet, which lies over the others.
    PushButton *sheetButton(const char *name) const
    {
        for (auto *candidate : sheet()->findChildren<PushButton *>()) {
            if (candidate->accessibleName() == QString::fromUtf8(name))
                return candidate;
        }
        return nullptr;
    }
    LicenceSheet *sheet() const { return panel.findChild<LicenceSheet *>(); }
    template <typename Phase> bool is() const { return std::holds_alternative<Phase>(provisioner->phase()); }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeNetwork> network = std::make_shared<FakeNetwork>();
    std::unique_ptr<Provisioner> provisioner;
    QWidget panel;
    RuntimeSetupView *view = nullptr;
};

} // namespace

TEST_F(RuntimeSetupViewTest, itPreparesWhenItComesOnScreen)
{
    EXPECT_TRUE(is<Provisioner::Idle>());
    panel.show();
    QCoreApplication::processEvents();
    EXPECT_TRUE(is<Provisioner::Checking>());
    EXPECT_TRUE(shows(QStringLiteral("Set up Android")));
    EXPECT_TRUE(shows(QStringLiteral("One-time download from Google")));
    EXPECT_TRUE(shows(QStringLiteral("Checking Google's Android packages…")));
    EXPECT_TRUE(panel.findChild<Spinner *>());
}

TEST_F(RuntimeSetupViewTest, theConsentNamesWhatIsDownloadedAndItsSize)
{
    QLocale::setDefault(QLocale::c());
    offer();
    EXPECT_TRUE(shows(QStringLiteral(
        "Quillnest runs Android apps on Google's Android Emulator. It downloads the emulator, platform-tools and the "
        "Android 15 system image (1.5 GB) directly from Google after you accept Google's licence.")));
    EXPECT_TRUE(button("Read licence…"));
    EXPECT_TRUE(button("Accept & Download"));
    EXPECT_FALSE(sheet());
}

TEST_F(RuntimeSetupViewTest, aVersionSwitchDoesNotSpeakOfTheTools)
{
    QLocale::setDefault(QLocale::c());
    RuntimeArchive image;
    image.size = 1200000000;
    const RuntimePlan plan{{image}, {}};
    fakes.settings->setValue(QStringLiteral("QuillnestAndroidAPI"), 36);
    EXPECT_EQ(
        RuntimeSetupView::consentText(fakes.platform, plan),
        QStringLiteral(
            "Quillnest runs Android apps on Google's Android Emulator. It downloads the Android 16 system image "
            "(1.2 GB) directly from Google after you accept Google's licence."));
}

TEST_F(RuntimeSetupViewTest, bothButtonsOpenTheLicencesAndNothingMore)
{
    for (const auto *name : {"Read licence…", "Accept & Download"}) {
        offer();
        QTest::mouseClick(button(name), Qt::LeftButton);
        ASSERT_TRUE(sheet()) << name;
        EXPECT_TRUE(shows(QStringLiteral("Google Android SDK licence")));
        EXPECT_TRUE(shows(QStringLiteral(
            "You are accepting this licence with Google. Quillnest only downloads the packages for you.")));
        const auto text = sheet()->findChild<QTextBrowser *>()->toPlainText();
        EXPECT_TRUE(text.startsWith(QStringLiteral("android-sdk-license\n\nTerms\n  <b>as written</b>")))
            << text.toStdString();
        EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
        QTest::mouseClick(sheetButton("Decline"), Qt::LeftButton);
        settle();
        EXPECT_FALSE(sheet());
    }
}

TEST_F(RuntimeSetupViewTest, whoDeclinesCanLookAgain)
{
    offer();
    QTest::mouseClick(button("Accept & Download"), Qt::LeftButton);
    QTest::mouseClick(sheetButton("Decline"), Qt::LeftButton);
    settle();
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
    EXPECT_TRUE(network->downloads.empty());
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    QTest::mouseClick(sheetButton("Accept & Download"), Qt::LeftButton);
    settle();
    EXPECT_TRUE(is<Provisioner::Downloading>());
    EXPECT_FALSE(sheet());
}

TEST_F(RuntimeSetupViewTest, escapeDeclines)
{
    offer();
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    QTest::keyClick(sheet()->findChild<QTextBrowser *>(), Qt::Key_Escape);
    settle();
    EXPECT_FALSE(sheet());
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
}

TEST_F(RuntimeSetupViewTest, theKeyboardStaysOnTheSheet)
{
    offer();
    QApplication::setActiveWindow(&panel);
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    QStringList visited;
    for (int i = 0; i < 4; ++i) {
        auto *const focused = panel.focusWidget();
        ASSERT_TRUE(focused && sheet()->isAncestorOf(focused));
        visited.append(focused->accessibleName());
        QTest::keyClick(focused, Qt::Key_Tab);
    }
    EXPECT_EQ(
        visited,
        (QStringList{
            QStringLiteral("Licence text"), QStringLiteral("Decline"), QStringLiteral("Accept & Download"),
            QStringLiteral("Licence text")}));
}

TEST_F(RuntimeSetupViewTest, whatHadTheKeyboardMayGoWhileTheSheetIsOpen)
{
    offer();
    QApplication::setActiveWindow(&panel);
    auto *before = new QLineEdit(&panel);
    before->show();
    before->setFocus();
    ASSERT_EQ(QApplication::focusWidget(), before);
    const QPointer<LicenceSheet> open(new LicenceSheet(fakes.platform, provisioner->plan()->licenses, &panel));
    delete before;
    QTest::keyClick(open, Qt::Key_Escape);
    EXPECT_FALSE(open && open->isVisible());
}

TEST_F(RuntimeSetupViewTest, progressIsNamedWithItsShare)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    EXPECT_TRUE(shows(QStringLiteral("Downloading The platform…")));
    EXPECT_TRUE(shows(QStringLiteral("0%")));
    const auto *bar = panel.findChild<ProgressBar *>();
    ASSERT_TRUE(bar);
    network->downloads.at(0)->events.onWrite(2999, 10000);
    EXPECT_TRUE(shows(QStringLiteral("29%")));
    EXPECT_EQ(bar->value(), 300);
    EXPECT_EQ(panel.findChild<ProgressBar *>(), bar);
}

TEST_F(RuntimeSetupViewTest, aFailureIsToldAndTriedAgainWithANewConsent)
{
    offer();
    provisioner->acceptAndInstall();
    settle();
    network->downloads.at(0)->events.onCompleted(QStringLiteral("Connection closed"));
    settle();
    EXPECT_TRUE(shows(QStringLiteral(
        "Google's servers can't be reached. Check the connection to the internet, and try again. (Download failed: "
        "Connection closed)")));
    ASSERT_TRUE(button("Try again"));
    QTest::mouseClick(button("Try again"), Qt::LeftButton);
    EXPECT_TRUE(is<Provisioner::Checking>());
    settle();
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
    EXPECT_TRUE(button("Accept & Download"));
}

TEST_F(RuntimeSetupViewTest, aCompleteRuntimeIsReadyAtOnce)
{
    const auto paths = AndroidRuntimePaths::managed(fakes.platform, 35);
    const auto place = [this](const QString &path, bool executable) {
        fakes.writeFile(path.mid(fakes.home->path().size() + 1), "x", executable);
    };
    place(paths.adb(), true);
    place(paths.emulator(), true);
    place(paths.systemImage(), false);
    place(*paths.avdHome + QLatin1Char('/') + paths.avdName + QStringLiteral(".ini"), false);
    place(*paths.avdHome + QLatin1Char('/') + paths.avdName + QStringLiteral(".avd/config.ini"), false);
    panel.show();
    QCoreApplication::processEvents();
    EXPECT_TRUE(shows(QStringLiteral("Android is ready")));
    EXPECT_TRUE(network->fetched.isEmpty());
}

TEST_F(RuntimeSetupViewTest, aSwitchWhileItIsOnScreenMakesANewPlan)
{
    offer();
    provisioner->reset();
    settle();
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
    EXPECT_EQ(network->fetched.size(), 4);
}

TEST_F(RuntimeSetupViewTest, theHeaderFollowsTheAppearance)
{
    panel.show();
    const auto color = [this] {
        for (const auto *label : panel.findChildren<QLabel *>()) {
            if (label->text() == u"Set up Android")
                return label->palette().color(QPalette::WindowText);
        }
        return QColor();
    };
    const auto light = color();
    fakes.appearance->setDark(true);
    EXPECT_LT(light.lightness(), 100);
    EXPECT_GT(color().lightness(), 200);
}

TEST_F(RuntimeSetupViewTest, nothingTurnsWhileNothingIsSeen)
{
    panel.show();
    QCoreApplication::processEvents();
    EXPECT_GT(fakes.clock->pending(), 0U);
    panel.hide();
    EXPECT_EQ(fakes.clock->pending(), 0U);
}

TEST_F(RuntimeSetupViewTest, afterTheConsentTheKeyboardStaysWithTheSetup)
{
    auto *before = new QLineEdit(&panel);
    offer();
    panel.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    button("Accept & Download")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button("Accept & Download"), Qt::Key_Return);
    ASSERT_TRUE(sheet());
    sheetButton("Accept & Download")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(sheetButton("Accept & Download"), Qt::Key_Return);
    settle();
    ASSERT_TRUE(is<Provisioner::Downloading>());
    EXPECT_FALSE(before->hasFocus());
    EXPECT_EQ(QApplication::focusWidget(), view);
}

TEST_F(RuntimeSetupViewTest, whoDeclinesFindsTheKeyboardWhereItWas)
{
    offer();
    panel.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
    button("Read licence…")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button("Read licence…"), Qt::Key_Return);
    QTest::keyClick(sheet()->findChild<QTextBrowser *>(), Qt::Key_Escape);
    settle();
    EXPECT_EQ(QApplication::focusWidget(), button("Read licence…"));
}

TEST_F(RuntimeSetupViewTest, theSheetGoesWithThePlanThatItShows)
{
    offer();
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    auto *const accept = sheetButton("Accept & Download");
    network->answers[tools].body.replace("as written", "otherwise");
    provisioner->reset();
    EXPECT_FALSE(sheet()->isVisible());
    QTest::keyClick(accept, Qt::Key_Return);
    settle();
    EXPECT_FALSE(sheet());
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>()) << "the new plan waits for a consent of its own";
    EXPECT_TRUE(network->downloads.empty());
}

TEST_F(RuntimeSetupViewTest, theSheetClosesWithThePanel)
{
    offer();
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    ASSERT_TRUE(sheet());
    panel.hide();
    settle();
    EXPECT_FALSE(sheet());
    panel.show();
    settle();
    EXPECT_FALSE(sheet());
    EXPECT_TRUE(is<Provisioner::NeedsAcceptance>());
}

TEST_F(RuntimeSetupViewTest, theSheetFollowsTheAppearance)
{
    offer();
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    const auto *text = sheet()->findChild<QTextBrowser *>();
    EXPECT_EQ(text->palette().color(QPalette::Text), Palette::light().label);
    fakes.appearance->setDark(true);
    EXPECT_EQ(text->palette().color(QPalette::Text), Palette::dark().label);
    for (const auto *label : sheet()->findChildren<QLabel *>())
        EXPECT_GT(label->palette().color(QPalette::WindowText).lightness(), 150) << label->text().toStdString();
}

TEST_F(RuntimeSetupViewTest, withoutACompositorTheShadeReachesIntoTheCorners)
{
    offer();
    QTest::mouseClick(button("Read licence…"), Qt::LeftButton);
    const auto lightness = [this](int x, int y) { return inPoints(panel.grab()).pixelColor(x, y).lightness(); };
    EXPECT_EQ(lightness(0, 0), lightness(40, 2));
    EXPECT_EQ(lightness(panel.width() - 2, panel.height() - 2), lightness(40, 2));
}
