#include "package/PathData.h"

#include <QByteArrayView>
#include <QChar>
#include <QList>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace quillnest
{

namespace
{

constexpr int maximumPasses = 200000;

/// A command letter, or the text of a number.
struct Token {
    char32_t letter = 0;
    std::string number;
};

/// A buffer of one token and the tokens before it.
class Tokens
{
public:
    void character(char32_t character)
    {
        switch (character) {
        case ',':
        case ' ':
        case '\n':
        case '\t':
            flush();
            break;
        case '-':
            // A sign begins a number unless it belongs to an exponent.
            if (m_previous != 'e' && m_previous != 'E')
                flush();
            m_buffer += '-';
            break;
        case '.':
            if (m_buffer.find('.') != std::string::npos)
                flush();
            m_buffer += '.';
            break;
        default:
            if (character != 'e' && character != 'E' && QChar::isLetter(character)) {
                flush();
                m_tokens.push_back({.letter = character, .number = {}});
            } else {
                // What no number holds may stand for any other such character.
                m_buffer += character < 0x80 ? static_cast<char>(character) : '?';
            }
        }
        m_previous = character;
    }

    std::vector<Token> take()
    {
        flush();
        return std::move(m_tokens);
    }

private:
    void flush()
    {
        if (m_buffer.empty())
            return;
        // An exponent mark without digits before it is a letter after all.
        const char first = m_buffer.front();
        m_tokens.push_back({.letter = first == 'e' || first == 'E' ? char32_t(first) : 0, .number = m_buffer});
        m_buffer.clear();
    }

    std::vector<Token> m_tokens;
    std::string m_buffer;
    char32_t m_previous = ' ';
};

std::vector<Token> tokenise(std::string_view text)
{
    Tokens tokens;
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString characters = decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    for (const char32_t character : characters.toUcs4())
        tokens.character(character);
    return tokens.take();
}

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// Takes the digits at the head of a text away; how many they were.
std::size_t takeDigits(std::string_view &text)
{
    const auto count = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
    text.remove_prefix(count);
    return count;
}

/// Whether the whole text is a number: an optional sign, digits with at most one point among them, and maybe an
/// exponent.
bool isNumber(std::string_view text)
{
    const auto takeSign = [&text] {
        if (text.starts_with('+') || text.starts_with('-'))
            text.remove_prefix(1);
    };
    takeSign();
    auto digits = takeDigits(text);
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        digits += takeDigits(text);
    }
    if (digits == 0)
        return false;
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        takeSign();
        if (takeDigits(text) == 0)
            return false;
    }
    return text.empty();
}

/// Whether a number past the range of a double is past its upper end: by the place of its first digit that isn't 0.
bool isBeyondTheGreatest(std::string_view text)
{
    const auto mark = std::min(text.find_first_of("eE"), text.size());
    const auto point = std::min(text.find('.'), mark);
    const auto first = text.find_first_of("123456789");
    const auto place
        = first < point ? static_cast<std::int64_t>(point - first) : -static_cast<std::int64_t>(first - point);
    std::int64_t exponent = 0;
    for (const char character : text.substr(mark)) {
        // Longer than any text is long.
        constexpr std::int64_t enough = std::int64_t{1} << 40;
        if (isDigit(character) && exponent < enough)
            exponent = exponent * 10 + (character - '0');
    }
    const bool isNegative = text.substr(mark).find('-') != std::string_view::npos;
    return place + (isNegative ? -exponent : exponent) > 0;
}

/// The whole text as a number. Values past the range of a double are infinite or 0.
std::optional<double> numberIn(std::string_view text)
{
    if (!isNumber(text))
        return std::nullopt;
    // Whatever the locale.
    bool isInRange = false;
    const auto value = QByteArrayView(text.data(), static_cast<qsizetype>(text.size())).toDouble(&isInRange);
    if (isInRange)
        return value;
    const double end = isBeyondTheGreatest(text) ? std::numeric_limits<double>::infinity() : 0;
    return text.starts_with('-') ? -end : end;
}

class Interpreter
{
public:
    explicit Interpreter(std::vector<Token> tokens) : m_tokens(std::move(tokens)) { }

    Path run()
    {
        for (int pass = 0; pass < maximumPasses && m_index < m_tokens.size(); ++pass) {
            const char32_t letter = m_tokens[m_index].letter;
            if (letter != 0) {
                m_command = letter;
                ++m_index;
            }
            m_isRelative = QChar::isLower(m_command);
            const bool argumentsRead = obey(letter != 0);
            // The command is lost, and with it the token that it stumbled over.
            if (!argumentsRead)
                ++m_index;
        }
        return std::move(m_path);
    }

private:
    /// False where an argument isn't there or is no number.
    bool obey(bool letterRead)
    {
        switch (QChar::toUpper(m_command)) {
        case 'M':
            return with<2>(&Interpreter::move);
        case 'L':
            return with<2>(&Interpreter::line);
        case 'H':
            return with<1>(&Interpreter::horizontal);
        case 'V':
            return with<1>(&Interpreter::vertical);
        case 'C':
            return with<6>(&Interpreter::curve);
        case 'S':
            return with<4>(&Interpreter::smoothCurve);
        case 'Q':
            return with<4>(&Interpreter::quadratic);
        case 'T':
            return with<2>(&Interpreter::smoothQuadratic);
        case 'A':
            return with<7>(&Interpreter::arc);
        case 'Z':
            m_path.close();
            succeed(m_subpathStart);
            // It takes no number: one that stands behind it would be asked about again and again. To close once more
            // changes nothing, and what follows is lost.
            if (!letterRead)
                m_index = m_tokens.size();
            return true;
        default:
            if (!letterRead)
                ++m_index;
            return true;
        }
    }

    template <std::size_t count> using Numbers = std::array<double, count>;

    /// Reads the numbers from the current token on; stops in front of the one that is none.
    template <std::size_t count> bool with(void (Interpreter::*command)(const Numbers<count> &))
    {
        Numbers<count> numbers;
        for (double &number : numbers) {
            const auto value = m_index < m_tokens.size() ? numberIn(m_tokens[m_index].number) : std::nullopt;
            if (!value)
                return false;
            number = *value;
            ++m_index;
        }
        (this->*command)(numbers);
        return true;
    }

    Point at(double x, double y) const { return m_isRelative ? Point{x, y} + m_current : Point{x, y}; }

    void succeed(Point end, std::optional<Point> control = std::nullopt)
    {
        m_current = end;
        m_previous = m_command;
        m_lastControl = control;
    }

    void move(const Numbers<2> &n)
    {
        const auto end = at(n[0], n[1]);
        m_path.moveTo(end);
        m_subpathStart = end;
        succeed(end);
        // Further pairs are lines.
        m_command = m_isRelative ? 'l' : 'L';
    }

    void line(const Numbers<2> &n)
    {
        if (m_path.isEmpty())
            m_path.moveTo(m_current);
        straight(at(n[0], n[1]));
    }

    void horizontal(const Numbers<1> &n) { straight({n[0] + (m_isRelative ? m_current.x : 0), m_current.y}); }
    void vertical(const Numbers<1> &n) { straight({m_current.x, n[0] + (m_isRelative ? m_current.y : 0)}); }

    void straight(Point end)
    {
        m_path.lineTo(end);
        succeed(end);
    }

    void curve(const Numbers<6> &n)
    {
        const auto second = at(n[2], n[3]);
        const auto end = at(n[4], n[5]);
        m_path.cubicTo(at(n[0], n[1]), second, end);
        succeed(end, second);
    }

    void smoothCurve(const Numbers<4> &n)
    {
        const auto second = at(n[0], n[1]);
        const auto end = at(n[2], n[3]);
        m_path.cubicTo(reflectionAfter(U"CScs"), second, end);
        succeed(end, second);
    }

    void quadratic(const Numbers<4> &n)
    {
        const auto control = at(n[0], n[1]);
        const auto end = at(n[2], n[3]);
        m_path.quadraticTo(control, end);
        succeed(end, control);
    }

    void smoothQuadratic(const Numbers<2> &n)
    {
        const auto end = at(n[0], n[1]);
        const auto control = reflectionAfter(U"QTqt");
        m_path.quadraticTo(control, end);
        succeed(end, control);
    }

    /// The last control point mirrored, if the command before was one of these; otherwise the current point.
    Point reflectionAfter(std::u32string_view commands) const
    {
        if (!m_lastControl || commands.find(m_previous) == std::u32string_view::npos)
            return m_current;
        return m_current * 2 - *m_lastControl;
    }

    void arc(const Numbers<7> &n)
    {
        const auto end = at(n[5], n[6]);
        if (n[0] == 0 || n[1] == 0 || end == m_current)
            m_path.lineTo(end);
        else
            addArc(std::abs(n[0]), std::abs(n[1]), n[2] * std::numbers::pi / 180, n[3] != 0, n[4] != 0, end);
        succeed(end);
    }

    /// From its end points to its centre, as the SVG specification converts them, and then piece by piece.
    void addArc(double rx, double ry, double phi, bool large, bool sweep, Point end)
    {
        constexpr double pi = std::numbers::pi;
        const double cosine = std::cos(phi);
        const double sine = std::sin(phi);
        const auto half = (m_current - end) * 0.5;
        const double x = cosine * half.x + sine * half.y;
        const double y = cosine * half.y - sine * half.x;

        const double lambda = x * x / (rx * rx) + y * y / (ry * ry);
        if (lambda > 1) {
            rx *= std::sqrt(lambda);
            ry *= std::sqrt(lambda);
        }
        const double d = rx * rx * y * y + ry * ry * x * x;
        double factor = d == 0 ? 0 : std::sqrt(std::max(0.0, (rx * rx * ry * ry - d) / d));
        if (large == sweep)
            factor = -factor;
        const double centerX = factor * rx * y / ry;
        const double centerY = -factor * ry * x / rx;

        const Point u{(x - centerX) / rx, (y - centerY) / ry};
        const Point v{(-x - centerX) / rx, (-y - centerY) / ry};
        const double start = std::atan2(u.y, u.x);
        double turn = std::atan2(u.x * v.y - u.y * v.x, u.x * v.x + u.y * v.y);
        if (!sweep && turn > 0)
            turn -= 2 * pi;
        if (sweep && turn < 0)
            turn += 2 * pi;

        const auto middle = (m_current + end) * 0.5;
        const Point center = Point{cosine * centerX - sine * centerY, sine * centerX + cosine * centerY} + middle;
        const auto rotated = [&](Point p) { return Point{cosine * p.x - sine * p.y, sine * p.x + cosine * p.y}; };
        const auto onEllipse = [&](double angle) {
            return center + rotated({rx * std::cos(angle), ry * std::sin(angle)});
        };
        const auto slope = [&](double angle) { return rotated({-rx * std::sin(angle), ry * std::cos(angle)}); };

        // Extreme radii give an angle that is no number; it is drawn as one piece, and so as nothing.
        const int pieces
            = std::isfinite(turn) ? std::max(1, static_cast<int>(std::ceil(std::abs(turn) / (pi / 2)))) : 1;
        const double step = turn / pieces;
        const double handle = 4.0 / 3 * std::tan(step / 4);
        for (int i = 0; i < pieces; ++i) {
            const double a = start + i * step;
            const double b = a + step;
            m_path.cubicTo(onEllipse(a) + slope(a) * handle, onEllipse(b) - slope(b) * handle, onEllipse(b));
        }
    }

    const std::vector<Token> m_tokens;
    std::size_t m_index = 0;
    char32_t m_command = 'M';
    char32_t m_previous = ' ';
    bool m_isRelative = false;
    Point m_current;
    Point m_subpathStart;
    std::optional<Point> m_lastControl;
    Path m_path;
};

} // namespace

std::optional<Path> PathData::parse(std::string_view text)
{
    auto path = Interpreter(tokenise(text)).run();
    if (path.isEmpty())
        return std::nullopt;
    return path;
}

} // namespace quillnest
