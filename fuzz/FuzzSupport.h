// SPDX-License-Identifier: MIT
#ifndef FUZZSUPPORT_H
#define FUZZSUPPORT_H

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

// What every fuzz target shares: a Qt application for the image plug-ins, a
// quiet debug stream and scratch files of its own.
namespace FuzzSupport {

// A QGuiApplication on the offscreen platform (the SVG decoder needs fonts),
// with debug and warning lines dropped: they cost time and say nothing here.
void initialize();

// A file path of this process with the given suffix, the same on every call.
QString scratchFile(const QString& suffix);
bool write(const QString& path, const std::uint8_t* data, std::size_t size);

// Whether encoded image bytes claim at most 4096 × 4096 pixels, or no size at
// all. Comic pages decode with no pixel limit on purpose; bigger ones would only
// measure the machine's memory.
bool fitsBudget(const QByteArray& bytes);

} // namespace FuzzSupport

#endif
