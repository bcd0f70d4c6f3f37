#pragma once

#include "base/QuillnestLog.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "runtime/AndroidRuntimePaths.h"
#include "runtime/RuntimePlan.h"

#include <QObject>
#include <QStringList>

#include <optional>
#include <variant>

namespace quillnest
{

/// Turns a plan into a working managed runtime for the selected Android version: downloads each archive with the user's
/// consent, checks it, unpacks it, lays out the AVD and records what was installed. One for the process; it goes on
/// whether or not anybody looks. Main thread; the heavy steps run in the background.
class AndroidRuntimeProvisioner : public QObject
{
    Q_OBJECT

public:
    /// Nothing done yet.
    struct Idle {
        bool operator==(const Idle &) const = default;
    };
    /// Reading Google's lists.
    struct Checking {
        bool operator==(const Checking &) const = default;
    };
    /// A plan waits for the user's consent.
    struct NeedsAcceptance {
        bool operator==(const NeedsAcceptance &) const = default;
    };
    /// An archive is being fetched; the fraction is from 0 to 1.
    struct Downloading {
        QString component;
        double fraction = 0;
        bool operator==(const Downloading &) const = default;
    };
    /// A step with the words to show.
    struct Installing {
        QString text;
        bool operator==(const Installing &) const = default;
    };
    /// The runtime is complete.
    struct Ready {
        bool operator==(const Ready &) const = default;
    };
    /// Stopped; the words to show.
    struct Failed {
        QString text;
        bool operator==(const Failed &) const = default;
    };
    using Phase = std::variant<Idle, Checking, NeedsAcceptance, Downloading, Installing, Ready, Failed>;

    explicit AndroidRuntimeProvisioner(Platform platform);
    ~AndroidRuntimeProvisioner() override;

    const Phase &phase() const { return m_phase; }
    /// The plan on offer.
    const std::optional<RuntimePlan> &plan() const { return m_plan; }

    /// Looks whether the runtime is complete and, if it isn't and nothing is under way, makes a plan.
    void prepare();
    /// The user's consent to the licences of the plan on offer.
    void acceptAndInstall();
    /// Forgets plan and failure, unless an install is under way.
    void reset();

Q_SIGNALS:
    /// The phase or the plan is another.
    void changed();

private:
    AndroidRuntimePaths selectedPaths() const;
    Task<> makePlan();
    Task<> acceptedInstall(RuntimePlan plan, QStringList acceptedLicenses);
    /// Throws what the user is told; the arguments outlive the task.
    Task<> install(const RuntimePlan &plan, const QStringList &acceptedLicenses);
    // The steps for one archive.
    Task<> fetch(const RuntimeArchive &archive, const QString &file);
    Task<> verify(const RuntimeArchive &archive, const QString &file);
    Task<> unpack(const RuntimeArchive &archive, const QString &file, const QString &destination);
    void setPhase(Phase phase);

    const Platform m_platform;
    const std::shared_ptr<QuillnestLog> m_log;
    Phase m_phase = Idle{};
    std::optional<RuntimePlan> m_plan;
    /// Counts plans and resets: a plan that was overtaken is dropped.
    int m_round = 0;
};

} // namespace quillnest
