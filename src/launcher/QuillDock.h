#pragma once

#include "launcher/PanelLook.h"
#include "launcher/PanelServices.h"
#include "look/HeaderIconButton.h"

#include <QWidget>

#include <optional>

class QLabel;

namespace quillnest
{

class ElidedLabel;
class Spinner;

/// The strip under the search: the app that is open, or what Android is doing.
class QuillDock : public QWidget
{
    Q_OBJECT

public:
    QuillDock(const PanelServices &services, const PanelLook &look, QWidget *parent = nullptr);

    /// The store or the look has changed.
    void refresh();
    bool showsApp() const { return m_app.has_value(); }
    QSize sizeHint() const override { return {200, 56}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class OpenApp;

    void refreshState();
    void placeTexts(QLayout &row) const;
    void sendMediaKey(MediaAction action);

    const PanelServices &m_services;
    const PanelLook &m_look;
    std::optional<MobileApp> m_app;
    /// What a click on the app's part of the row takes.
    OpenApp *m_openApp = nullptr;
    ElidedLabel *m_title = nullptr;
    ElidedLabel *m_detail = nullptr;
    Spinner *m_spinner = nullptr;
    HeaderIconButton *m_playPause = nullptr;
    HeaderIconButton *m_next = nullptr;
    HeaderIconButton *m_close = nullptr;
};

} // namespace quillnest
