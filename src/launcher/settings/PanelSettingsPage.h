#pragma once

#include "launcher/PanelLook.h"
#include "launcher/PanelServices.h"

#include <QImage>
#include <QWidget>

class QButtonGroup;
class QLabel;
class QVBoxLayout;

namespace quillnest
{

class ChoiceButton;
class Footnote;
class SettingRow;

/// The settings inside the panel.
class PanelSettingsPage : public QWidget
{
    Q_OBJECT

public:
    PanelSettingsPage(const PanelServices &services, const PanelLook &look, QWidget *parent = nullptr);

    /// The look or a setting has changed.
    void refresh();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void addHeading(QVBoxLayout *column, const QString &text);
    void addFlag(QVBoxLayout *column, const Setting<bool> &setting, const QString &text);
    void addThemes(QVBoxLayout *column);
    void addWallpapers(QVBoxLayout *column);
    void chooseWallpaper(const QString &id);
    void choosePhoto();
    /// Begins to read the user's photo for its sample, once for each photo and size.
    void readPhotoSample(QSize pixels);

    const PanelServices &m_services;
    const PanelLook &m_look;
    SettingRow *m_openAtLogin = nullptr;
    Footnote *m_loginError = nullptr;
    ChoiceButton *m_photoButton = nullptr;
    QImage m_photoSample;
    QString m_photoKey;
    std::vector<QLabel *> m_headings;
    std::vector<std::function<void()>> m_readers;
};

} // namespace quillnest
