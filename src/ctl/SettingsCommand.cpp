#include "ctl/AllSettings.h"
#include "ctl/ArgumentReader.h"
#include "ctl/Commands.h"
#include "ctl/Errors.h"
#include "ctl/Output.h"
#include "ctl/SettingText.h"
#include "platform/HostServices.h"

namespace quillnest::ctl
{

namespace
{

const auto keyName = QStringLiteral("KEY");

std::shared_ptr<SettingsStore> openStore()
{
    auto store = hostSettings();
    if (const auto file = store->damagedFile())
        complain(QStringLiteral("the settings could not be read and are now at %1").arg(*file));
    return store;
}

/// A key can be any text but none.
QString checkedKey(const QString &key)
{
    if (key.isEmpty())
        throw UsageError(QStringLiteral("KEY is empty"));
    return key;
}

/// A line for each setting that there can be: key, type, default, value and meaning, with a tab between them. The
/// default and the value are JSON, a long value its beginning; "-" stands for none. Of a family, whose keys end in
/// anything, each that is there.
QByteArray table(const SettingsStore &store)
{
    const auto field = [](const QVariant &value) {
        const auto text = value.isValid() ? SettingText::toJson(value) : QByteArray("-");
        // A library of hundreds of apps is no table's.
        constexpr qsizetype shown = 60;
        return text.size() <= shown ? text : text.left(shown) + "...";
    };
    QByteArray text = "key\ttype\tdefault\tvalue\tmeaning\n";
    const auto line = [&](const QString &key, const SettingDeclaration &setting, const QVariant &value) {
        text += key.toUtf8() + '\t' + setting.type.toUtf8() + '\t' + field(setting.defaultValue) + '\t' + field(value)
            + '\t' + setting.meaning.toUtf8() + '\n';
    };
    const auto keys = store.keys();
    for (const auto &setting : allSettings()) {
        if (!setting.isFamily) {
            line(setting.key, setting, store.value(setting.key));
            continue;
        }
        line(setting.key + QStringLiteral("…"), setting, {});
        for (const auto &key : keys) {
            if (key.startsWith(setting.key))
                line(key, setting, store.value(key));
        }
    }
    return text;
}

int list(ArgumentReader reader)
{
    const bool keysAlone = reader.takeFlag({QStringLiteral("--keys")});
    const bool all = reader.takeFlag({QStringLiteral("--all")});
    reader.operands({});
    if (keysAlone && all)
        throw UsageError(QStringLiteral("--keys and --all are two lists"));
    const auto store = openStore();
    if (all) {
        print(table(*store));
        return 0;
    }
    QByteArray text;
    for (const auto &key : store->keys()) {
        text += key.toUtf8();
        if (!keysAlone)
            text += '\t' + SettingText::toJson(store->value(key));
        text += '\n';
    }
    print(text);
    return 0;
}

int get(ArgumentReader reader)
{
    const bool raw = reader.takeFlag({QStringLiteral("--raw")});
    const auto key = checkedKey(reader.operands({keyName}).constFirst());
    const auto value = openStore()->value(key);
    if (!value.isValid())
        throw Failure(QStringLiteral("no setting \"%1\"").arg(key));
    if (raw && value.typeId() == QMetaType::QByteArray)
        print(value.toByteArray());
    else if (raw && value.typeId() == QMetaType::QString)
        print(value.toString().toUtf8());
    else
        print(SettingText::toJson(value) + '\n');
    return 0;
}

int set(ArgumentReader reader)
{
    struct Option {
        const char *name;
        SettingText::Type type;
    };
    static constexpr Option options[]{
        {"--bool", SettingText::Type::boolean}, {"--int", SettingText::Type::integer},
        {"--float", SettingText::Type::real},   {"--text", SettingText::Type::text},
        {"--data", SettingText::Type::data},
    };
    std::optional<Option> chosen;
    for (const auto &option : options) {
        if (!reader.takeFlag({QLatin1String(option.name)}))
            continue;
        if (chosen)
            throw UsageError(
                QStringLiteral("%1 and %2 are two types").arg(QLatin1String(chosen->name), QLatin1String(option.name)));
        chosen = option;
    }
    const auto operands = reader.operands({keyName, QStringLiteral("VALUE")});
    const auto key = checkedKey(operands[0]);
    const auto value = chosen ? SettingText::fromText(chosen->type, operands[1]) : SettingText::fromJson(operands[1]);
    if (const auto reason = openStore()->setValue(key, value))
        throw Failure(QStringLiteral("\"%1\" can't be written: %2").arg(key, *reason));
    return 0;
}

int unset(const ArgumentReader &reader)
{
    const auto key = checkedKey(reader.operands({keyName}).constFirst());
    if (const auto reason = openStore()->remove(key))
        throw Failure(QStringLiteral("\"%1\" can't be taken away: %2").arg(key, *reason));
    return 0;
}

} // namespace

int settings(const QStringList &arguments)
{
    if (arguments.isEmpty())
        throw UsageError(QStringLiteral("missing list, get, set or unset"));
    const ArgumentReader reader(arguments.mid(1));
    const auto &verb = arguments.constFirst();
    if (verb == QStringLiteral("list"))
        return list(reader);
    if (verb == QStringLiteral("get"))
        return get(reader);
    if (verb == QStringLiteral("set"))
        return set(reader);
    if (verb == QStringLiteral("unset"))
        return unset(reader);
    throw UsageError(QStringLiteral("unknown command \"settings %1\"").arg(verb));
}

} // namespace quillnest::ctl
