#include "device/KeyInput.h"
#include "shell/CommandTable.h"
#include "stream/ScreenRenderer.h"

#include <QBuffer>
#include <QFile>
#include <QSaveFile>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

int screencap(const CommandContext &context)
{
    const auto at = context.args.indexOf(u"-d"_s);
    const auto display = context.device.displays.find(at < 0 ? 0 : context.args.value(at + 1).toInt());
    if (!display) {
        context.io.error(u"Failed to take screenshot: no such display\n"_s);
        return 1;
    }
    QBuffer png;
    png.open(QBuffer::WriteOnly);
    ScreenRenderer().renderWhole(display->model()).save(&png, "PNG");
    const QString file = context.args.isEmpty() ? QString() : context.args.last();
    if (!file.endsWith(u".png"_s)) {
        context.io.outBytes(png.data());
        return 0;
    }
    QSaveFile save(context.device.tree.hostPath(context.io.absolute(file)));
    const bool saved = save.open(QFile::WriteOnly) && save.write(png.data()) > 0 && save.commit();
    if (!saved)
        context.io.error(u"Error opening file: %1\n"_s.arg(file));
    return saved ? 0 : 1;
}

int input(const CommandContext &context)
{
    QStringList args = context.args;
    int displayId = 0;
    while (!args.isEmpty()) { // an input source and a display may stand in front
        if (args[0] == u"-d" && args.size() > 1) {
            displayId = args[1].toInt();
            args = args.mid(2);
        } else if (args[0] == u"touchscreen" || args[0] == u"keyboard") {
            args.removeFirst();
        } else {
            break;
        }
    }
    const auto display = context.device.displays.find(displayId);
    const QString verb = args.value(0);
    if (!display)
        return 1;
    if (verb == u"tap" && args.size() == 3) {
        const QPointF at(args[1].toDouble(), args[2].toDouble());
        display->touch(0, at);
        display->touch(1, at);
    } else if (verb == u"swipe" && args.size() >= 5) {
        const QPointF from(args[1].toDouble(), args[2].toDouble());
        const QPointF to(args[3].toDouble(), args[4].toDouble());
        display->touch(0, from);
        for (int step = 1; step <= 8; ++step)
            display->touch(2, from + (to - from) * step / 8);
        display->touch(1, to);
    } else if (verb == u"text" && args.size() == 2) {
        display->insertText(QString(args[1]).replace(u"%s"_s, u" "_s));
    } else if (verb == u"keyevent" && args.size() >= 2) {
        for (const QString &key : args.mid(1))
            pressKey(context.device, displayId, keyCodeOf(key));
    } else {
        context.io.error(u"Error: Unknown command: %1\n"_s.arg(verb));
        return 255;
    }
    return 0;
}

int wm(const CommandContext &context)
{
    const ScreenModel model = context.device.displays.find(0)->model();
    if (context.args.value(0) == u"size") {
        context.io.out(u"Physical size: %1x%2\n"_s.arg(model.size.width()).arg(model.size.height()));
    } else if (context.args.value(0) == u"density") {
        context.io.out(u"Physical density: %1\n"_s.arg(model.dpi));
    } else {
        context.io.error(u"Unknown command: %1\n"_s.arg(context.args.value(0)));
        return 255;
    }
    return 0;
}

} // namespace

void addScreenCommands(CommandTable &table)
{
    table.add(u"screencap"_s, screencap);
    table.add(u"input"_s, input);
    table.add(u"wm"_s, wm);
}

} // namespace standin
