#pragma once

#include "updater/appcast/Appcast.h"

#include <string>
#include <string_view>

namespace kelo::test {

/// A feed with these items.
inline std::string feedOf(std::string_view items) {
    return R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">
<channel><title>Kelo</title>)" +
           std::string(items) + "</channel></rss>";
}

/// An item with an enclosure. more: elements inside the item; archive: attributes of the enclosure.
inline std::string release(std::string_view version, std::string_view more = "",
                           std::string_view archive = "") {
    return "<item><title>Kelo</title><sparkle:version>" + std::string(version) +
           "</sparkle:version>" + std::string(more) +
           "<enclosure url=\"https://updates.example.com/kelo.tar.zst\" " + std::string(archive) +
           " type=\"application/octet-stream\"/></item>";
}

inline updater::Appcast appcastOf(std::string_view items) {
    return updater::parseAppcast(bytesOf(feedOf(items)));
}

} // namespace kelo::test
