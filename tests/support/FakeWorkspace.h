#pragma once

#include "platform/Workspace.h"

#include <QList>

namespace orbitledge::testing {

/// A desktop that writes down what it is asked to open.
class FakeWorkspace final : public Workspace {
public:
    QList<QUrl> opened;
    bool hasNotificationSettings = true;

    QCoro::Task<bool> open(QUrl url, QString /*activationToken*/) override
    {
        opened.append(url);
        co_return true;
    }
    QCoro::Task<bool> openNotificationSettings() override
    {
        const bool copy = hasNotificationSettings;
        co_return copy;
    }
};

} // namespace orbitledge::testing
