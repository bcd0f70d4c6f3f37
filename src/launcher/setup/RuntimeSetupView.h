#pragma once

#include "look/LiveLook.h"
#include "platform/Platform.h"
#include "runtime/AndroidRuntimeProvisioner.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace quillnest
{

class LicenceSheet;
class ProgressBar;

/// Consent to and progress of the first download. Shows the provisioner and calls it; keeps nothing of its own, so
/// closing the panel changes nothing.
class RuntimeSetupView : public QWidget
{
    Q_OBJECT

public:
    RuntimeSetupView(const Platform &platform, AndroidRuntimeProvisioner &provisioner, QWidget *parent = nullptr);

    /// What a user is told before the licences: the plan's size and what is in it.
    static QString consentText(const Platform &platform, const RuntimePlan &plan);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void refresh();
    /// Empties the part below the header and gives it a new layout.
    QVBoxLayout *clear();
    void showBusy(const QString &text);
    void showConsent();
    void showDownload(const AndroidRuntimeProvisioner::Downloading &download);
    void showReady();
    void showFailure(const QString &text);
    QLabel *text(const QString &words, int points);
    void setColor(QLabel *label, bool isPrimary);
    void openLicences();
    void closeLicences();

    const Platform &m_platform;
    LiveLook m_look;
    AndroidRuntimeProvisioner &m_provisioner;
    QLabel *m_title = nullptr;
    QLabel *m_subtitle = nullptr;
    QWidget *m_content = nullptr;
    /// While a download's progress is on screen, so that it moves in place of being built anew.
    QPointer<ProgressBar> m_progress;
    QPointer<QLabel> m_percentage;
    QString m_component;
    QPointer<LicenceSheet> m_sheet;
    /// What the sheet asks consent to.
    std::optional<RuntimePlan> m_shownPlan;
};

} // namespace quillnest
