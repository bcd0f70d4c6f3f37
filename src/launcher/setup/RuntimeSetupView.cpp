#include "launcher/setup/RuntimeSetupView.h"

#include "launcher/setup/LicenceSheet.h"
#include "look/Fonts.h"
#include "look/ProgressBar.h"
#include "look/PushButton.h"
#include "look/Spinner.h"
#include "runtime/AndroidVersions.h"

#include <QApplication>
#include <QHideEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{

constexpr int symbolSize = 26;
/// Of the ground beside the card.
constexpr int beside = 8;

/// Calls the one of these functions that takes what the variant holds.
template <typename... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

RuntimeSetupView::RuntimeSetupView(const Platform &platform, AndroidRuntimeProvisioner &provisioner, QWidget *parent)
    : QWidget(parent), m_platform(platform), m_look(platform), m_provisioner(provisioner), m_content(new QWidget(this))
{
    setAccessibleName(QStringLiteral("Set up Android"));
    auto *whole = new QVBoxLayout(this);
    whole->setContentsMargins(beside + 16, 14, beside + 16, 16);
    whole->setSpacing(12);
    auto *header = new QVBoxLayout;
    header->setContentsMargins(symbolSize + 12, 0, 0, 0);
    header->setSpacing(1);
    m_title = text(QStringLiteral("Set up Android"), 15);
    m_subtitle = text(QStringLiteral("One-time download from Google"), 12);
    header->addWidget(m_title);
    header->addWidget(m_subtitle);
    whole->addLayout(header);
    whole->addWidget(m_content);

    connect(&m_provisioner, &AndroidRuntimeProvisioner::changed, this, &RuntimeSetupView::refresh);
    // A version was switched while this is on screen. Queued: whoever switches isn't done yet.
    connect(
        &m_provisioner, &AndroidRuntimeProvisioner::changed, this,
        [this] {
            if (isVisible() && std::holds_alternative<AndroidRuntimeProvisioner::Idle>(m_provisioner.phase()))
                m_provisioner.prepare();
        },
        Qt::QueuedConnection);
    connect(&m_look, &LiveLook::changed, this, [this] {
        m_component.clear();
        setColor(m_title, true);
        setColor(m_subtitle, false);
        refresh();
    });
    refresh();
}

QString RuntimeSetupView::consentText(const Platform &platform, const RuntimePlan &plan)
{
    const auto tools = plan.archives.size() > 1 ? QStringLiteral("the emulator, platform-tools and ") : QString();
    qint64 size = 0;
    for (const auto &archive : plan.archives)
        size += archive.size;
    return QStringLiteral(
               "Quillnest runs Android apps on Google's Android Emulator. It downloads %1the %2 system image (%3) "
               "directly from Google after you accept Google's licence.")
        .arg(
            tools, AndroidVersions::name(AndroidVersions::selected(*platform.settings)),
            QLocale().formattedDataSize(size, 1, QLocale::DataSizeSIFormat));
}

void RuntimeSetupView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_provisioner.prepare();
}

void RuntimeSetupView::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        closeLicences();
}

void RuntimeSetupView::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.separator, 1));
    painter.setBrush(colors.tile);
    painter.drawRoundedRect(QRectF(rect()).adjusted(beside + 0.5, 0.5, -beside - 0.5, -0.5), 12, 12);
    painter.drawPixmap(
        beside + 16, 18,
        m_look.symbol(QStringLiteral("shippingbox.and.arrow.backward"), symbolSize, colors.controlAccent, painter));
}

void RuntimeSetupView::refresh()
{
    using Provisioner = AndroidRuntimeProvisioner;
    // Nobody consents to what they have not been shown.
    if (m_provisioner.plan() != m_shownPlan
        || !std::holds_alternative<Provisioner::NeedsAcceptance>(m_provisioner.phase()))
        closeLicences();
    std::visit(
        Overloaded{
            [this](const Provisioner::Idle &) { showBusy(QStringLiteral("Checking Google's Android packages…")); },
            [this](const Provisioner::Checking &) { showBusy(QStringLiteral("Checking Google's Android packages…")); },
            [this](const Provisioner::NeedsAcceptance &) { showConsent(); },
            [this](const Provisioner::Downloading &download) { showDownload(download); },
            [this](const Provisioner::Installing &step) { showBusy(step.text); },
            [this](const Provisioner::Ready &) { showReady(); },
            [this](const Provisioner::Failed &failure) { showFailure(failure.text); },
        },
        m_provisioner.phase());
    update();
}

QVBoxLayout *RuntimeSetupView::clear()
{
    m_component.clear();
    // The keyboard stays here, and doesn't jump to the panel's first button.
    if (m_content->isAncestorOf(QApplication::focusWidget()))
        setFocus();
    const auto children = m_content->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    for (auto *child : children) {
        // It may be the button whose click brought us here.
        child->hide();
        child->deleteLater();
    }
    delete m_content->layout();
    auto *content = new QVBoxLayout(m_content);
    content->setContentsMargins(0, 0, 0, 0);
    content->setSpacing(10);
    return content;
}

QLabel *RuntimeSetupView::text(const QString &words, int points)
{
    auto *label = new QLabel(words, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFont(interfaceFont(points, points > 13 ? QFont::DemiBold : QFont::Normal));
    setColor(label, points > 12);
    return label;
}

void RuntimeSetupView::setColor(QLabel *label, bool isPrimary)
{
    const auto &colors = m_look.colors;
    auto palette = label->palette();
    palette.setColor(QPalette::WindowText, isPrimary ? colors.label : colors.secondaryLabel);
    label->setPalette(palette);
}

void RuntimeSetupView::showBusy(const QString &words)
{
    auto *row = new QHBoxLayout;
    clear()->addLayout(row);
    row->setSpacing(10);
    auto *spinner = new Spinner(m_look, 16, m_content);
    row->addWidget(spinner);
    row->addWidget(text(words, 13), 1);
    spinner->show();
}

void RuntimeSetupView::showConsent()
{
    auto *content = clear();
    const auto &plan = m_provisioner.plan();
    if (!plan)
        return;
    content->addWidget(text(consentText(m_platform, *plan), 13));
    auto *buttons = new QHBoxLayout;
    auto *read = new PushButton(m_look, QStringLiteral("Read licence…"), PushButton::Kind::plain, m_content);
    auto *accept = new PushButton(m_look, QStringLiteral("Accept & Download"), PushButton::Kind::prominent, m_content);
    // Nobody accepts what they haven't been shown.
    connect(read, &QAbstractButton::clicked, this, &RuntimeSetupView::openLicences);
    connect(accept, &QAbstractButton::clicked, this, &RuntimeSetupView::openLicences);
    buttons->addWidget(read);
    buttons->addWidget(accept);
    buttons->addStretch(1);
    content->addLayout(buttons);
}

void RuntimeSetupView::showDownload(const AndroidRuntimeProvisioner::Downloading &download)
{
    if (m_component != download.component || !m_progress) {
        auto *content = clear();
        content->addWidget(text(QStringLiteral("Downloading %1…").arg(download.component), 13));
        auto *row = new QHBoxLayout;
        row->setSpacing(10);
        m_progress = new ProgressBar(m_look, m_content);
        m_progress->setAccessibleName(QStringLiteral("Download progress"));
        m_percentage = text({}, 12);
        m_percentage->setWordWrap(false);
        // As wide as it will ever be, so that the bar doesn't twitch.
        m_percentage->setFixedWidth(m_percentage->fontMetrics().horizontalAdvance(QStringLiteral("100%")) + 2);
        m_percentage->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->addWidget(m_progress, 1);
        row->addWidget(m_percentage);
        content->addLayout(row);
        m_component = download.component;
    }
    m_progress->setFraction(download.fraction);
    m_percentage->setText(QStringLiteral("%1%").arg(static_cast<int>(download.fraction * 100)));
}

void RuntimeSetupView::showReady()
{
    auto *row = new QHBoxLayout;
    clear()->addLayout(row);
    row->setSpacing(8);
    auto *mark = new QLabel(m_content);
    mark->setPixmap(
        m_platform.symbols->pixmap(QStringLiteral("checkmark.circle.fill"), 18, QColor(0x2FA84F), devicePixelRatioF()));
    row->addWidget(mark);
    row->addWidget(text(QStringLiteral("Android is ready"), 13), 1);
}

void RuntimeSetupView::showFailure(const QString &words)
{
    auto *content = clear();
    auto *callout = text(words, 13);
    callout->setTextInteractionFlags(Qt::TextSelectableByMouse);
    content->addWidget(callout);
    auto *again = new PushButton(m_look, QStringLiteral("Try again"), PushButton::Kind::plain, m_content);
    connect(again, &QAbstractButton::clicked, this, [this] { m_provisioner.prepare(); });
    content->addWidget(again, 0, Qt::AlignLeft);
}

void RuntimeSetupView::openLicences()
{
    const auto &plan = m_provisioner.plan();
    if (m_sheet || !plan)
        return;
    m_shownPlan = plan;
    m_sheet = new LicenceSheet(m_platform, plan->licenses, window());
    connect(m_sheet, &LicenceSheet::accepted, this, [this] {
        setFocus();
        m_provisioner.acceptAndInstall();
    });
}

void RuntimeSetupView::closeLicences()
{
    if (m_sheet)
        m_sheet->close();
}

} // namespace quillnest
