#include "core/DiagnosticsReport.h"

#include <QJsonArray>

namespace quillnest
{

namespace
{

QJsonValue optionalNumber(const std::optional<double> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QString stateText(AppLibraryStore::AndroidState state)
{
    switch (state) {
    case AppLibraryStore::AndroidState::ready:
        return QStringLiteral("ready");
    case AppLibraryStore::AndroidState::starting:
        return QStringLiteral("starting");
    case AppLibraryStore::AndroidState::sleeping:
        return QStringLiteral("sleeping");
    case AppLibraryStore::AndroidState::notSetUp:
        break;
    }
    return QStringLiteral("notSetUp");
}

QJsonObject rectangle(const QRect &rect)
{
    return {
        {QStringLiteral("x"), rect.x()},
        {QStringLiteral("y"), rect.y()},
        {QStringLiteral("width"), rect.width()},
        {QStringLiteral("height"), rect.height()}};
}

QJsonObject window(const AppSession &session)
{
    const auto counters = session.counters();
    const auto &stream = counters.stream;
    const auto &renderer = counters.renderer;
    const auto &shown = counters.view;
    const auto displayID = session.displayID();
    return {
        {QStringLiteral("appID"), uuidText(session.appID())},
        {QStringLiteral("package"), session.package()},
        {QStringLiteral("visible"), session.isVisible()},
        {QStringLiteral("active"), counters.isActive},
        {QStringLiteral("pinned"), counters.isPinned},
        {QStringLiteral("windowId"), static_cast<qint64>(counters.windowId)},
        {QStringLiteral("frame"), rectangle(counters.frame)},
        {QStringLiteral("videoArea"), rectangle(counters.videoArea)},
        {QStringLiteral("scale"), counters.scale},
        {QStringLiteral("videoWidth"), counters.videoSize.width()},
        {QStringLiteral("videoHeight"), counters.videoSize.height()},
        {QStringLiteral("displayID"), displayID ? QJsonValue(*displayID) : QJsonValue()},
        {QStringLiteral("framesEnqueued"), static_cast<qint64>(stream.framesEnqueued)},
        {QStringLiteral("framesReceived"), static_cast<qint64>(renderer.received)},
        {QStringLiteral("framesDecoded"), static_cast<qint64>(renderer.decoded)},
        {QStringLiteral("framesDropped"), static_cast<qint64>(renderer.dropped)},
        {QStringLiteral("framesFailed"), static_cast<qint64>(renderer.failed)},
        {QStringLiteral("framesShown"), static_cast<qint64>(shown.framesShown)},
        {QStringLiteral("lastFrameAgeMilliseconds"), shown.lastFrameAge},
        {QStringLiteral("frameAgeP50Milliseconds"), shown.frameAges.percentile(0.5)},
        {QStringLiteral("frameAgeP99Milliseconds"), shown.frameAges.percentile(0.99)},
        {QStringLiteral("worstFrameAgeMilliseconds"), shown.frameAges.worst()},
        {QStringLiteral("firstFrameSeconds"), optionalNumber(counters.firstShownSeconds)},
        {QStringLiteral("controlSent"), static_cast<qint64>(stream.controlLatency.count())},
        {QStringLiteral("controlP50Milliseconds"), stream.controlLatency.percentile(0.5)},
        {QStringLiteral("controlP99Milliseconds"), stream.controlLatency.percentile(0.99)},
        {QStringLiteral("controlWaiting"), static_cast<qint64>(stream.controlWaiting)},
        {QStringLiteral("controlDropped"), static_cast<qint64>(stream.controlDropped)},
        {QStringLiteral("audioPackets"), static_cast<qint64>(stream.audioPackets)},
        {QStringLiteral("audioFramesPlayed"), static_cast<qint64>(stream.audioFramesPlayed)},
    };
}

QJsonObject setup(const AndroidRuntimeProvisioner::Phase &phase)
{
    using Provisioner = AndroidRuntimeProvisioner;
    const auto named = [](const QString &name, const QString &text = {}) {
        return QJsonObject{{QStringLiteral("phase"), name}, {QStringLiteral("text"), text}};
    };
    if (const auto *download = std::get_if<Provisioner::Downloading>(&phase)) {
        auto result = named(QStringLiteral("downloading"), download->component);
        result.insert(QStringLiteral("fraction"), download->fraction);
        return result;
    }
    if (const auto *step = std::get_if<Provisioner::Installing>(&phase))
        return named(QStringLiteral("installing"), step->text);
    if (const auto *failure = std::get_if<Provisioner::Failed>(&phase))
        return named(QStringLiteral("failed"), failure->text);
    if (std::holds_alternative<Provisioner::Checking>(phase))
        return named(QStringLiteral("checking"));
    if (std::holds_alternative<Provisioner::NeedsAcceptance>(phase))
        return named(QStringLiteral("needsAcceptance"));
    return named(std::holds_alternative<Provisioner::Ready>(phase) ? QStringLiteral("ready") : QStringLiteral("idle"));
}

} // namespace

QJsonObject diagnosticsReport(
    const AppLibraryStore &store, const AndroidWindowRegistry &windows, const AndroidRuntimeProvisioner &provisioner)
{
    QJsonArray apps;
    for (const auto &app : store.apps()) {
        apps.append(QJsonObject{
            {QStringLiteral("id"), uuidText(app.id)},
            {QStringLiteral("name"), app.name},
            {QStringLiteral("sourcePath"), app.sourcePath}});
    }
    QJsonArray sessions;
    for (const auto &[appID, session] : windows.sessions())
        sessions.append(window(*session));
    const auto popup = windows.menuBarPopupFrame();
    const auto launching = store.launchingAppID();
    return {
        {QStringLiteral("androidState"), stateText(store.androidState())},
        {QStringLiteral("statusMessage"), store.statusMessage()},
        {QStringLiteral("setup"), setup(provisioner.phase())},
        {QStringLiteral("launchingAppID"), launching ? QJsonValue(uuidText(*launching)) : QJsonValue()},
        {QStringLiteral("apps"), apps},
        {QStringLiteral("windows"), sessions},
        {QStringLiteral("panel"), popup ? QJsonValue(rectangle(*popup)) : QJsonValue()},
    };
}

} // namespace quillnest
