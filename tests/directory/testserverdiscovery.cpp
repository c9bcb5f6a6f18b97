#include "directory/serverdiscovery.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ServerDiscovery, AConfiguredServerIsSchemeHostAndPortAlone)
{
    for (const QString &good :
         {u"http://127.0.0.1:8080"_s, u"https://mirror.example"_s, u"HTTP://Mirror.Example:80"_s})
        EXPECT_EQ(ServerDiscovery::checkBase(good), QString()) << good.toStdString();
    const std::pair<QString, QString> bad[] = {
        {u"127.0.0.1:8080"_s, u"must begin with http"_s},
        {u"ftp://mirror.example"_s, u"must begin with http"_s},
        {u"http://mirror.example/"_s, u"trailing"_s},
        {u"http://mirror.example/json"_s, u"a path"_s},
        {u"http://mirror.example?x=1"_s, u"more than"_s},
        {u"http://user@mirror.example"_s, u"more than"_s},
        {u"http://mirror.example:99999"_s, u"no server"_s},
        {u"http://mirror example"_s, u"no server"_s},
    };
    for (const auto &[base, reason] : bad) {
        const QString text = ServerDiscovery::checkBase(base);
        EXPECT_TRUE(text.contains(reason)) << base.toStdString() << ": " << text.toStdString();
    }
}

TEST(ServerDiscovery, ServersNamedByTheServiceRecordAreAskedOverHttps)
{
    EXPECT_EQ(ServerDiscovery::baseForHost(u"de1.api.radio-browser.info."_s, 443),
              u"https://de1.api.radio-browser.info"_s);
    EXPECT_EQ(ServerDiscovery::baseForHost(u"Mirror.Example"_s, 8443), u"https://mirror.example:8443"_s);
    EXPECT_EQ(ServerDiscovery::baseForHost(u"."_s, 443), QString());
}

} // namespace
