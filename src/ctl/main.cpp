// quillnestctl: posts commands to running instances, reads and writes settings, follows the log.

#include "platform/linux/LinuxPlatform.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonValue>
#include <QTextStream>
#include <QThread>

#include <cstdio>

namespace
{

using namespace quillnest;

const char usage[] = R"(usage: quillnestctl COMMAND

  post TEXT               post a command to every running instance ("open:Tide", "back", ...)
  state                   what the running instance is doing, as JSON
  settings list           all settings as JSON
  settings get KEY        one setting; exit status 1 when it is absent
  settings set KEY VALUE  VALUE is JSON: true, 5, "text", ["a"], {"k": 1}; other text counts as text
  settings unset KEY      back to the default
  log [-f]                the general log; -f goes on with what is added
)";

int fail(const QString &message)
{
    std::fprintf(stderr, "quillnestctl: %s\n", qUtf8Printable(message));
    return 1;
}

void print(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

/// JSON for people: bytes as base64 text, everything else as it is.
QByteArray jsonText(const QVariant &value)
{
    const auto wrapped = QJsonDocument::fromVariant(QVariantList{
        value.typeId() == QMetaType::QByteArray ? QVariant(QString::fromLatin1(value.toByteArray().toBase64()))
                                                : value});
    const auto text = wrapped.toJson(QJsonDocument::Compact);
    return text.sliced(1, text.size() - 2);
}

QVariant parseValue(const QString &text)
{
    const auto document = QJsonDocument::fromJson(QStringLiteral("[%1]").arg(text).toUtf8());
    const auto list = document.toVariant().toList();
    return list.size() == 1 ? list.constFirst() : QVariant(text);
}

int settings(const QStringList &arguments)
{
    const auto store = linuxSettings();
    const auto verb = arguments.value(0);
    const auto key = arguments.value(1);
    if (verb == QStringLiteral("list") && arguments.size() == 1) {
        for (const auto &name : store->keys())
            print(name.toUtf8() + '\t' + jsonText(store->value(name)) + '\n');
        return 0;
    }
    if (verb == QStringLiteral("get") && arguments.size() == 2) {
        const auto value = store->value(key);
        if (!value.isValid())
            return 1;
        print(jsonText(value) + '\n');
        return 0;
    }
    if (verb == QStringLiteral("set") && arguments.size() == 3) {
        store->setValue(key, parseValue(arguments[2]));
        return 0;
    }
    if (verb == QStringLiteral("unset") && arguments.size() == 2) {
        store->remove(key);
        return 0;
    }
    return fail(QStringLiteral("settings: list, get KEY, set KEY VALUE or unset KEY"));
}

int followLog(bool follow)
{
    QFile file(linuxFolders().logs + QStringLiteral("/quillnest.log"));
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("no log at %1").arg(file.fileName()));
    do {
        const auto text = file.readAll();
        print(text);
        if (follow && text.isEmpty())
            QThread::msleep(200);
    } while (follow);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto arguments = QCoreApplication::arguments().mid(1);
    const auto command = arguments.value(0);
    if (command == QStringLiteral("--help") || command == QStringLiteral("-h")) {
        print(usage);
        return 0;
    }
    if (command == QStringLiteral("post") && arguments.size() == 2) {
        return linuxCommandChannel()->post(arguments[1]) ? 0 : fail(QStringLiteral("no session bus"));
    }
    if (command == QStringLiteral("state") && arguments.size() == 1) {
        const auto report = linuxDiagnostics()->ask();
        if (!report)
            return fail(QStringLiteral("Quillnest isn't running"));
        print(*report);
        return 0;
    }
    if (command == QStringLiteral("settings"))
        return settings(arguments.mid(1));
    if (command == QStringLiteral("log"))
        return followLog(arguments.contains(QStringLiteral("-f")));
    std::fputs(usage, stderr);
    return 2;
}
