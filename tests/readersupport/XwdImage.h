#ifndef XWDIMAGE_H
#define XWDIMAGE_H

#include <QByteArray>
#include <QImage>

// Reads the dump that xwd writes of a true-colour window: 24 or 32 bits a
// pixel in either byte order. A null image for anything else.
QImage readXwd(const QByteArray& dump);

#endif
