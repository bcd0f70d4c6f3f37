#include "driver/SetupScreen.h"

#include <QColor>
#include <QFile>

#include <cmath>

namespace quillnest::driver
{

namespace
{

/// The colour of the button that a screen wants clicked, in the light appearance.
constexpr QRgb prominent = qRgb(0x0A, 0x6C, 0xFF);

bool isProminent(QRgb pixel)
{
    const auto near = [](int one, int other) { return std::abs(one - other) < 6; };
    return near(qRed(pixel), qRed(prominent)) && near(qGreen(pixel), qGreen(prominent))
        && near(qBlue(pixel), qBlue(prominent));
}

/// The middle of the lowest area of that colour that is as wide as a button, in pixels; null if there is none.
QPointF prominentButton(const QImage &image)
{
    constexpr int narrowest = 120;
    std::optional<QRect> found;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0, begin = 0; x <= image.width(); ++x) {
            if (x < image.width() && isProminent(image.pixel(x, y)))
                continue;
            if (x - begin >= narrowest) {
                const QRect run(begin, y, x - begin, 1);
                // Another row of the same button, however its words interrupt it.
                const bool same = found && y - found->bottom() < 40 && run.left() <= found->right();
                found = same ? found->united(run) : run;
            }
            begin = x + 1;
        }
    }
    return found ? QRectF(*found).center() : QPointF();
}

} // namespace

QRect SetupScreen::panel() const
{
    return rectangle(m_program.state().value(QStringLiteral("panel")).toObject());
}

void SetupScreen::open()
{
    m_program.post(QStringLiteral("home"));
    m_program.waitForState(QStringLiteral("the panel"), 20, [](const QJsonObject &state) {
        return state.value(QStringLiteral("panel")).isObject();
    });
}

QImage SetupScreen::picture() const
{
    return m_program.desktop().screenshot(panel());
}

void SetupScreen::clickProminent()
{
    QPointF place;
    QPointF before;
    // Until it has come to rest: a screen may move in.
    waitFor(QStringLiteral("a button to click"), 20, [&] {
        before = place;
        place = prominentButton(picture());
        return !place.isNull() && place == before;
    });
    m_program.desktop().click(panel().topLeft() + place / m_program.desktop().scale());
}

void SetupScreen::consent()
{
    waitForPhase(QStringLiteral("needsAcceptance"));
    clickProminent();
    // Nothing has been consented to yet: the sheet with the licences has come.
    waitForPhase(QStringLiteral("needsAcceptance"), 1);
    clickProminent();
    waitFor(QStringLiteral("the consent to be taken"), 20, [this] {
        return state().value(QStringLiteral("phase")).toString() != QStringLiteral("needsAcceptance");
    });
}

void SetupScreen::tryAgain()
{
    const double scale = m_program.desktop().scale();
    QPointF place;
    QPointF before;
    waitFor(QStringLiteral("the card with the failure"), 20, [&] {
        before = place;
        const auto image = picture();
        int bottom = image.height() - 1;
        while (bottom > 0 && image.pixel(image.width() / 2, bottom) != qRgb(255, 255, 255))
            --bottom;
        // The button stands in the card's lower left corner.
        place = QPointF(70, bottom / scale - 30);
        return bottom > 0 && place == before;
    });
    m_program.desktop().click(panel().topLeft() + place);
    waitFor(QStringLiteral("the failure to be gone"), 20, [this] {
        return state().value(QStringLiteral("phase")).toString() != QStringLiteral("failed");
    });
}

QJsonObject SetupScreen::state() const
{
    return m_program.state().value(QStringLiteral("setup")).toObject();
}

void SetupScreen::waitForPhase(const QString &phase, double seconds) const
{
    m_program.waitForState(
        QStringLiteral("the setup to be in \"%1\"").arg(phase), seconds, [&](const QJsonObject &all) {
            return all.value(QStringLiteral("setup"))[QStringLiteral("phase")].toString() == phase;
        });
}

QString SetupScreen::failure(double seconds) const
{
    waitForPhase(QStringLiteral("failed"), seconds);
    return state().value(QStringLiteral("text")).toString();
}

QString SetupScreen::log() const
{
    QFile file(m_program.logFolder() + QStringLiteral("/runtime-setup.log"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace quillnest::driver
