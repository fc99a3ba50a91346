// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/ClientAddress.h"

#include <gtest/gtest.h>

using namespace lorvane::backend;

namespace {

TrustedProxies trusting(std::string_view list) { return TrustedProxies::parse(list).value(); }

} // namespace

TEST(ClientAddress, IsThePeerWithoutATrustedProxy) {
    const TrustedProxies nobody;
    EXPECT_EQ(nobody.clientOf("192.0.2.1", ""), "192.0.2.1");
    EXPECT_EQ(nobody.clientOf("192.0.2.1", "198.51.100.9"), "192.0.2.1") << "anybody can say so";
    EXPECT_EQ(trusting("10.0.0.0/8").clientOf("192.0.2.1", "198.51.100.9"), "192.0.2.1");
    EXPECT_EQ(nobody.clientOf("::ffff:192.0.2.1", ""), "192.0.2.1");
    EXPECT_EQ(nobody.clientOf("", "198.51.100.9"), "");
}

TEST(ClientAddress, OfIpv6IsTheNetworkOfOneCustomer) {
    const TrustedProxies nobody;
    EXPECT_EQ(nobody.clientOf("2001:db8:1:2:3:4:5:6", ""), "2001:db8:1:2::/64");
    EXPECT_EQ(nobody.clientOf("2001:db8:1:2:ffff::1", ""), nobody.clientOf("2001:db8:1:2::1", ""));
    EXPECT_NE(nobody.clientOf("2001:db8:1:3::1", ""), nobody.clientOf("2001:db8:1:2::1", ""));
    EXPECT_EQ(trusting("::1").clientOf("::1", "2001:db8:1:2::9"), "2001:db8:1:2::/64");
}

TEST(ClientAddress, IsTheLastOneThatATrustedProxyHasNamed) {
    const auto proxies = trusting("127.0.0.1, 10.0.0.0/8,fd00::/8");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "192.0.2.1"), "192.0.2.1");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "198.51.100.9, 192.0.2.1"), "192.0.2.1")
        << "what stood there before came from the client";
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "198.51.100.9,192.0.2.1,10.1.2.3, fd12::1"), "192.0.2.1");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "10.0.0.9, 10.0.0.8"), "10.0.0.9")
        << "a client of our own network";
    EXPECT_EQ(proxies.clientOf("127.0.0.1", ""), "127.0.0.1");
    EXPECT_EQ(proxies.clientOf("11.0.0.1", "192.0.2.1"), "11.0.0.1");
}

TEST(ClientAddress, MayBeNamedWithItsPort) {
    const auto proxies = trusting("127.0.0.1");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "192.0.2.1:4711"), "192.0.2.1");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "[2001:db8::1]:4711"), "2001:db8::/64");
    EXPECT_EQ(proxies.clientOf("127.0.0.1", "[2001:db8::1]"), "2001:db8::/64");
}

TEST(ClientAddress, IsTheProxyWhereItNamesNone) {
    const auto proxies = trusting("127.0.0.1");
    for (const char* none : {"unknown", "_hidden", "192.0.2.1, ", ",", "1.2.3", "[", "[]", ":", "192.0.2.1 x",
                             "::ffff:192.0.2.1:1:2:3"})
        EXPECT_EQ(proxies.clientOf("127.0.0.1", none), "127.0.0.1") << none;
}

TEST(TrustedProxies, AreAddressesAndNetworks) {
    EXPECT_TRUE(TrustedProxies::parse(""));
    const auto proxies = trusting("192.0.2.128/25, 2001:db8::/33, 203.0.113.7");
    EXPECT_EQ(proxies.clientOf("192.0.2.128", "1.1.1.1"), "1.1.1.1");
    EXPECT_EQ(proxies.clientOf("192.0.2.127", "1.1.1.1"), "192.0.2.127");
    EXPECT_EQ(proxies.clientOf("2001:db8:7fff::1", "1.1.1.1"), "1.1.1.1");
    EXPECT_EQ(proxies.clientOf("2001:db8:8000::1", "1.1.1.1"), "2001:db8:8000::/64");
    EXPECT_EQ(proxies.clientOf("203.0.113.7", "1.1.1.1"), "1.1.1.1");
    EXPECT_EQ(proxies.clientOf("203.0.113.6", "1.1.1.1"), "203.0.113.6");
    EXPECT_EQ(trusting("0.0.0.0/0").clientOf("9.9.9.9", "1.1.1.1"), "1.1.1.1");
    for (const char* bad : {"x", "127.0.0.1,", ",", "127.0.0.1/33", "::/129", "127.0.0.1/", "127.0.0.1/x",
                            "127.0.0.1/-1", "localhost", "127.0.0.1 10.0.0.1", "127.0.0.1/8/8"})
        EXPECT_FALSE(TrustedProxies::parse(bad)) << bad;
}
