// SPDX-License-Identifier: MIT
#ifndef KEYEDPNG_H
#define KEYEDPNG_H

#include <QByteArray>
#include <QImage>

// Qt 5's PNG reader lays out a 16-bit colour PNG with a transparent colour
// (a tRNS chunk) as if libpng gave it four channels, where it gives three:
// the picture comes out smeared. Such pages are read with libpng itself, to
// 8 bits a channel with the colour key as alpha. Qt 4's reader reads them well.
namespace KeyedPng {

// Whether the bytes are such a PNG, from its chunks before the image data.
bool isDeepColourWithKey(const QByteArray& bytes);
// The PNG decoded by libpng; null on failure. The caller bounds its size.
QImage read(const QByteArray& bytes);

} // namespace KeyedPng

#endif
