#ifndef WINDOW_MODEL_BACKGROUNDJOBS_H
#define WINDOW_MODEL_BACKGROUNDJOBS_H

#include <functional>
#include <memory>
#include <vector>

#include <QObject>
#include <QPointer>
#include <QTimer>

#include "window/model/BackgroundJob.h"

namespace casetable {

/// Jobs in the background that have an effect once they have ended. Used by one thread, that of the
/// window; those that still run when it is destroyed are left to themselves, without an effect.
class BackgroundJobs : public QObject {
    Q_OBJECT

public:
    /// What is done on the window's thread in the end; null for nothing.
    using Effect = std::function<void()>;

    BackgroundJobs();

    /// Begins a job, of which `act` must not throw. What it returns is done if `receiver` is
    /// still there. Throws Failure as BackgroundJob does.
    void run(QObject& receiver, std::function<Effect()> act);

    /// Whether all have ended, and had their effect.
    bool areDone() const { return running_.empty(); }

private:
    struct Running {
        QPointer<QObject> receiver;
        std::shared_ptr<Effect> effect;
        std::unique_ptr<BackgroundJob> job;
    };

    void look();

    std::vector<Running> running_;
    QTimer timer_;
};

} // namespace casetable

#endif
