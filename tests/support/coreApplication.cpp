#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>

namespace {

int argumentCount = 0;

/// Without an application Qt hands no thread the events of its sockets.
class CoreApplication : public testing::Environment
{
public:
    void SetUp() override
    {
        m_application = std::make_unique<QCoreApplication>(argumentCount, nullptr);
    }
    void TearDown() override
    {
        m_application.reset();
    }

private:
    std::unique_ptr<QCoreApplication> m_application;
};

const testing::Environment* const application =
    testing::AddGlobalTestEnvironment(new CoreApplication);

} // namespace
