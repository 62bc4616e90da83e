// A target that gives its driver by a call that fails at once.
#include <cstring>

#include "host/CTraceFactory.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace Zu::Wep::Trace {
namespace {

struct Driver final : CChannelDriver {
    void GetAttribute(const char* name, ChannelAttribute& value) override {
        if (std::strncmp(name, "Trace Data Pin Size", 19) == 0) {
            value = {ChannelAttribute::Integer, "7"};
        }
    }
} driver;

struct Server final : CChannelServer {
    void GetObjectFile(const std::string& /*cpu*/, std::string& /*file*/) override {}
    void GetChannelDriver(const std::string& /*cpu*/, CChannelDriver*& given) override {
        given = &driver;
        throw 1;
    }
    void ListCPUs(std::vector<std::string>& cpus) override { cpus = {"Core_0/Cluster"}; }
} server;

struct Factory final : CTraceFactory {
    void CreateChannelServer(CChannelServer*& given, int /*mode*/) override { given = &server; }
    void DestroyChannelServer(CChannelServer* /*server*/, int /*mode*/) override {}
} factory;

}  // namespace
}  // namespace Zu::Wep::Trace

EXPORT Zu::Wep::Trace::CTraceFactory* CreateTraceFactory() { return &Zu::Wep::Trace::factory; }
EXPORT void DestroyTraceFactory(Zu::Wep::Trace::CTraceFactory* /*factory*/) {}
