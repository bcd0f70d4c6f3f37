#include "hostile/HostileTexts.h"

namespace quillnest::hostile
{

namespace
{
std::string repeated(const std::string &piece, std::size_t size)
{
    std::string text;
    text.reserve(size + piece.size());
    while (text.size() < size)
        text += piece;
    return text;
}

/// Up to a megabyte, most of them far shorter.
std::size_t length(Chance &chance)
{
    return chance.pick<std::size_t>({10, 100, 200, 201, 300, 4096, 4097, 32767, 32768, 100'000, 1'000'000});
}

std::string commanding(Chance &chance)
{
    return chance.pick<std::string>(
        {"\x1b[31mred\x1b]0;title\x07", "one\ntwo\r\nthree", std::string("nul\0behind", 10), "\u202Ekpa.exe",
         "\u2066\u2067x", "\u200E\u200F\u061C", "line\u2028and\u2029paragraph", "\u0085\u009b31m", "\xFF\xFE\x80",
         "\xED\xA0\x80\xED\xB0\x80", "\xF0\x9F\x98", "tab\there", "\x7F\x08\x08\x08"});
}

std::string ofBytes(Chance &chance, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += static_cast<char>(chance.below(256));
    return text;
}
} // namespace

std::string label(Chance &chance)
{
    switch (chance.below(8)) {
    case 0:
        return commanding(chance);
    case 1:
        return repeated(
            chance.pick<std::string>(
                {"a", "-1", "_v2.", " ", "e\u0301", "\u0301", "\U0001F468\u200D", "\u0627\u0644", "\u202E", "\n",
                 "-1 -", "\xFF"}),
            length(chance));
    case 2:
        return chance.pick<std::string>(
            {"", " ", "-1", "../../label", "<b>bold</b>&amp;", "%1%2%s%n", "$(reboot)", "a;reboot", "-v1", "\u00A0"});
    case 3:
        return ofBytes(chance, chance.below(300));
    default:
        return "Label " + std::to_string(chance.below(100));
    }
}

std::string packageName(Chance &chance)
{
    switch (chance.below(5)) {
    case 0:
        return commanding(chance);
    case 1:
        return chance.pick<std::string>(
            {"", "..", "../..", "-", "-r", "--user", "/data/app", "org.example.app;reboot", "org.example.$(id)",
             "org.example.app\nreboot", "org.example.`id`", "org..app", "android", "org.example.app ",
             "o\u202Erg.app"});
    case 2:
        return repeated("org.example.", length(chance)) + "app";
    default:
        return "org.example.app" + std::to_string(chance.below(100));
    }
}

std::string entryName(Chance &chance)
{
    switch (chance.below(6)) {
    case 0:
        return commanding(chance);
    case 1:
        return repeated(chance.pick<std::string>({"../", "res/", "n", "-", "\x1b[2J"}), chance.below(60'000));
    case 2:
        return chance.pick<std::string>(
            {"", "..", "../../../etc/passwd", "/etc/passwd", "-", "-rf", "--help", "res/", "res/../AndroidManifest.xml",
             "res\\icon.png", "C:\\x", "AndroidManifest.xml/", "./AndroidManifest.xml", "androidmanifest.xml",
             "AndroidManifest.xml ", "META-INF/MANIFEST.MF"});
    case 3:
        return "res/mipmap-" + chance.pick<std::string>({"xxxhdpi", "hdpi", "\u202E", "-"}) + "/ic_launcher"
            + chance.pick<std::string>({".png", ".webp", "_foreground.png", ".PNG", "-1-1-1.png"});
    case 4:
        return "Payload/" + chance.pick<std::string>({"A.app", "..", ""}) + "/AppIcon"
            + chance.pick<std::string>({"60x60@3x", "99999999999999999999", "9223372036854775807@3x", "-1"}) + ".png";
    default:
        return "assets/" + std::to_string(chance.u32());
    }
}

std::string pathData(Chance &chance)
{
    const auto piece = [&chance]() -> std::string {
        if (!chance.oneIn(3))
            return chance.pick<std::string>(
                {"M0 0h24v24h-24z", "L24 24L24 0", "z1", "a9 5 30 1 1 1 1", "C9e9 -9e9 -9e9 9e9 24 24", "l1e38 1e38",
                 "A0 0 0 0 0 0 0", "m-1-1.5.5", "q1 2 3 4t5 6", "H1e309V-1e309", "M nan inf", "s1 1 1 1", "zzzz",
                 "L,,,,1", "a1e30 1e30 1e30 01 1e30 1e30"});
        return chance.pick<std::string>({"M", "z", "l", "C", "a", "."}) + std::to_string(chance.number(24))
            + chance.pick<std::string>({"", " ", ",", "-", ".", "e", "e-999"});
    };
    std::string text = "M0 0";
    if (chance.oneIn(3))
        return text + repeated(piece(), chance.pick<std::size_t>({100, 4000, 30'000}));
    for (auto count = chance.below(60); count > 0; --count)
        text += piece();
    return text;
}

} // namespace quillnest::hostile
