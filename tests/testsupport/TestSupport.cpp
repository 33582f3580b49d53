// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include "HostCompat.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLinearGradient>
#include <QPainter>
#include <QProcess>
#include <QWidget>
#include <QtEndian>

#include <zip.h>
#include <zlib.h>

#include <cstdlib>

#include <nlohmann/json.hpp>

namespace TestSupport {

namespace {
bool skipped = false;
}

void noteSkip()
{
    skipped = true;
}

int exitStatus(int failures)
{
    if (failures != 0)
        return failures == skipStatus ? 1 : failures;
    return skipped ? skipStatus : 0;
}

QByteArray joined(const QList<QByteArray>& parts, char separator)
{
    QByteArray text;
    for (int i = 0; i < parts.size(); ++i)
        text += (i ? QByteArray(1, separator) : QByteArray()) + parts.at(i);
    return text;
}

QStringList methodsOf(const QMetaObject& meta)
{
    static const char* const accesses[] = { "private ", "protected ", "" };
    static const char* const kinds[] = { "method", "signal", "slot", "constructor" };
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const bool signal = method.methodType() == QMetaMethod::Signal;
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
        const QByteArray signature = method.methodSignature();
#else
        const QByteArray signature(method.signature());
#endif
        methods << (QString::fromLatin1(signal ? "" : accesses[method.access()])
            + kinds[method.methodType()] + ' ' + signature + ' '
            + joined(method.parameterNames(), ','))
                       .trimmed();
    }
    return methods;
}

namespace {
std::unique_ptr<QInputEvent> at(QInputEvent* event, unsigned long time)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    event->setTimestamp(time);
#else
    HostCompat::setArrivalTime(time);
#endif
    return std::unique_ptr<QInputEvent>(event);
}
} // namespace

std::unique_ptr<QInputEvent> mouseEvent(QEvent::Type type, const QPointF& position,
    Qt::MouseButton button, Qt::MouseButtons held, unsigned long time)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    return at(
        new QMouseEvent(type, position, position, position, button, held, Qt::NoModifier), time);
#else
    const QPoint pixel = position.toPoint();
    return at(new QMouseEvent(type, pixel, pixel, button, held, Qt::NoModifier), time);
#endif
}

std::unique_ptr<QInputEvent> wheelEvent(
    const QPointF& position, int angle, Qt::KeyboardModifiers modifiers, unsigned long time)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    return at(new QWheelEvent(position, position, QPoint(), QPoint(0, angle), Qt::NoButton,
                  modifiers, Qt::NoScrollPhase, false),
        time);
#else
    return at(new QWheelEvent(position.toPoint(), position.toPoint(), angle, Qt::NoButton,
                  modifiers, Qt::Vertical),
        time);
#endif
}

QByteArray traceLine(const QByteArray& expected)
{
    static const QByteArray debug = "{\"debug\":\"";
    if (!expected.startsWith(debug) || !expected.endsWith("\"}"))
        return expected;
    const QByteArray text = expected.mid(debug.size(), expected.size() - debug.size() - 2);
    return debug + debugLine(QString::fromUtf8(text)).toUtf8() + "\"}";
}

bool waitForWindowShown(QWidget* window)
{
#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
    return QTest::qWaitForWindowExposed(window);
#else
    // Qt for Embedded Linux shows a window once the events of showing it ran.
    QApplication::processEvents();
    return window->isVisible();
#endif
}

#if QT_VERSION < QT_VERSION_CHECK(5, 0, 0)
TemporaryDir::TemporaryDir()
{
    QByteArray pattern = QFile::encodeName(QDir::tempPath() + QStringLiteral("/tamber-XXXXXX"));
    if (mkdtemp(pattern.data()))
        m_path = QFile::decodeName(pattern);
}

TemporaryDir::~TemporaryDir()
{
    if (isValid())
        QProcess::execute(QStringLiteral("rm"), QStringList() << QStringLiteral("-rf") << m_path);
}
#endif

QString samplesDir()
{
    const QString dir = QStringLiteral(TAMBER_SAMPLES_DIR);
    return QFileInfo(dir + QStringLiteral("/Captain Science #001.cbz")).exists() ? dir : QString();
}

QString sampleCbz()
{
    return samplesDir() + QStringLiteral("/Captain Science #001.cbz");
}

QString sampleCbr()
{
    return samplesDir() + QStringLiteral("/Captain Science #001-cbi.cbr");
}

QString binDir()
{
    return QStringLiteral(TAMBER_BIN_DIR);
}

QString pluginFile()
{
    return binDir() + QStringLiteral("/libcomicsreader.so");
}

const QByteArray verificationText
    = "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
      "version=4.8.0\n"
      "debug=false\n"
      "buildkey=arm qws/linux ostra-g++ no-pkg-config QT_NO_QWS_CURSOR QT_NO_QWS_QPF2";

bool writeZip(const QString& path, const QList<ZipEntry>& entries)
{
    QFile::remove(path);
    int error = 0;
    zip_t* archive
        = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!archive)
        return false;
    // libzip reads the entries' bytes when the archive is closed, below.
    for (const ZipEntry& entry : entries) {
        const char* name = entry.first.constData();
        const bool isDirectory = entry.first.endsWith('/');
        zip_source_t* source = zip_source_buffer(
            archive, entry.second.constData(), zip_uint64_t(entry.second.size()), 0);
        const zip_int64_t index = isDirectory
            ? zip_dir_add(archive, name, ZIP_FL_ENC_RAW)
            : zip_file_add(archive, name, source, ZIP_FL_ENC_RAW | ZIP_FL_OVERWRITE);
        if (isDirectory || index < 0)
            zip_source_free(source);
        if (index < 0) {
            zip_discard(archive);
            return false;
        }
    }
    return zip_close(archive) == 0;
}

bool writeComic(const QString& path, int count, const QSize& pageSize)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QByteArray page = encode(makePage(pageSize.width(), pageSize.height()), "PNG");
    QList<ZipEntry> entries;
    for (int i = 1; i <= count; ++i)
        entries << ZipEntry(
            QStringLiteral("p%1.png").arg(i, 2, 10, QLatin1Char('0')).toUtf8(), page);
    return writeZip(path, entries);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QImage makePage(int width, int height, const QColor& ink)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(qRgb(240, 240, 230));
    QPainter painter(&image);
    painter.setPen(QPen(ink, qMax(1, width / 50)));
    painter.drawRect(image.rect().adjusted(width / 20, height / 20, -width / 20, -height / 20));
    return image;
}

QByteArray encode(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QImage drawing(int width, int height, const QColor& ink)
{
    QImage image = makePage(width, height, ink);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, width, height);
    gradient.setColorAt(0, QColor(250, 200, 80));
    gradient.setColorAt(1, QColor(40, 90, 200));
    painter.fillRect(QRect(width / 8, height / 8, width / 2, height / 3), gradient);
    painter.setPen(QPen(ink, 2));
    for (int x = 0; x < width; x += 7)
        painter.drawLine(x, height / 2, width - x, height - 1);
    return image;
}

QImage translucent(int width, int height)
{
    QImage image = drawing(width, height).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = qRgba(qRed(line[x]), qGreen(line[x]), qBlue(line[x]), 255 * x / (width - 1));
    }
    return image;
}

double meanDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull())
        return -1;
    const QImage first = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage second = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    qint64 sum = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const QRgb p = first.pixel(x, y), q = second.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q))
                + std::abs(qBlue(p) - qBlue(q)) + std::abs(qAlpha(p) - qAlpha(q));
        }
    }
    return double(sum) / (4.0 * first.width() * first.height());
}

namespace {

quint32 crc32(const QByteArray& bytes)
{
    return quint32(
        ::crc32(0, reinterpret_cast<const Bytef*>(bytes.constData()), uInt(bytes.size())));
}

// A value's bytes in memory order: after qToLittleEndian or qToBigEndian, a
// field of a file.
template<typename T> QByteArray bytesOf(T value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), int(sizeof value));
}

// RAR 5's variable-length integer: seven bits a byte, low bits first.
QByteArray vint(quint64 value)
{
    QByteArray bytes;
    do {
        char byte = char(value & 0x7f);
        value >>= 7;
        if (value)
            byte = char(byte | 0x80);
        bytes += byte;
    } while (value);
    return bytes;
}

// A header block: CRC32 of what follows it, the size, then the fields.
QByteArray rarBlock(const QByteArray& fields)
{
    const QByteArray sized = vint(quint64(fields.size())) + fields;
    return bytesOf(qToLittleEndian(crc32(sized))) + sized;
}

} // namespace

bool writeRar(const QString& path, const QList<ZipEntry>& entries)
{
    enum { mainHeader = 1, fileHeader = 2, endHeader = 5 };
    enum { hasDataArea = 0x0002, hasCrc = 0x0004, unixHost = 1, regularFile = 0100644 };

    QByteArray rar("Rar!\x1a\x07\x01\x00", 8);
    rar += rarBlock(vint(mainHeader) + vint(0) + vint(0));
    for (const ZipEntry& entry : entries) {
        const QByteArray& data = entry.second;
        const QByteArray fields = vint(fileHeader) + vint(hasDataArea) + vint(quint64(data.size()))
            + vint(hasCrc) + vint(quint64(data.size())) + vint(regularFile)
            + bytesOf(qToLittleEndian(crc32(data))) + vint(0) /* stored */ + vint(unixHost)
            + vint(quint64(entry.first.size())) + entry.first;
        rar += rarBlock(fields) + data;
    }
    rar += rarBlock(vint(endHeader) + vint(0) + vint(0));
    return writeFile(path, rar);
}

QByteArray gifWithScreen(const QSize& screen)
{
    QByteArray gif("GIF89a\0\0\0\0\x80\x00\x00\xff\xff\xff\x00\x00\x00"
                   "!\xf9\x04\x01\x00\x00\x00\x00,\x00\x00\x00\x00\x01\x00\x01\x00\x00"
                   "\x02\x02\x44\x01\x00;",
        43);
    return gif.replace(6, 4,
        bytesOf(qToLittleEndian(quint16(screen.width())))
            + bytesOf(qToLittleEndian(quint16(screen.height()))));
}

QByteArray pngHeaderOnly(const QSize& size, int depth)
{
    const auto bigEndian32 = [](quint32 value) { return bytesOf(qToBigEndian(value)); };
    auto chunk = [&](const QByteArray& type, const QByteArray& data) {
        return bigEndian32(quint32(data.size())) + type + data + bigEndian32(crc32(type + data));
    };
    const QByteArray header = bigEndian32(quint32(size.width()))
        + bigEndian32(quint32(size.height())) + char(depth)
        + QByteArray(4, '\0'); // greyscale, no interlace
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header)
        + chunk("IDAT", QByteArray("\x78\x9c", 2));
}

QByteArray blankPng(const QSize& size, int depth, int colourType)
{
    const auto bigEndian32 = [](quint32 value) { return bytesOf(qToBigEndian(value)); };
    auto chunk = [&](const QByteArray& type, const QByteArray& data) {
        return bigEndian32(quint32(data.size())) + type + data + bigEndian32(crc32(type + data));
    };
    const QByteArray header = bigEndian32(quint32(size.width()))
        + bigEndian32(quint32(size.height())) + char(depth) + char(colourType)
        + QByteArray(3, '\0');

    const int samples = colourType == 2 ? 3 : 1;
    // A filter byte and the row's bits, all zero.
    QByteArray row(1 + int((qint64(size.width()) * samples * depth + 7) / 8), '\0');
    z_stream stream = {};
    deflateInit(&stream, 9);
    QByteArray compressed;
    char out[64 * 1024];
    for (int y = 0; y <= size.height(); ++y) {
        const bool last = y == size.height();
        stream.next_in = reinterpret_cast<Bytef*>(row.data());
        stream.avail_in = last ? 0 : uInt(row.size());
        do {
            stream.next_out = reinterpret_cast<Bytef*>(out);
            stream.avail_out = sizeof out;
            deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
            compressed.append(out, int(sizeof out - stream.avail_out));
        } while (stream.avail_out == 0);
    }
    deflateEnd(&stream);
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", header) + chunk("IDAT", compressed)
        + chunk("IEND", QByteArray());
}

Announcements::Announcements(QObject* parser)
{
    connect(parser, SIGNAL(pageletParsed(Pagelet&)), SLOT(onPagelet(Pagelet&)));
    connect(parser, SIGNAL(volumeParsed(Volume&, bool, bool)), SLOT(onVolume(Volume&, bool, bool)));
    connect(parser, SIGNAL(imageParsed(Volume, QImage)), SLOT(onImage(Volume, QImage)));
}

void Announcements::onPagelet(Pagelet& pagelet)
{
    order += QLatin1Char('p');
    pages << pagelet;
}

void Announcements::onVolume(Volume& volume, bool hasRights, bool isLoan)
{
    order += hasRights || isLoan ? QLatin1Char('V') : QLatin1Char('v');
    volumes << volume;
}

void Announcements::onImage(const Volume& volume, const QImage& image)
{
    order += QLatin1Char('c');
    volumes << volume;
    cover = image;
}

Tamber::Tamber(const QString& folder)
    : environment(QProcessEnvironment::systemEnvironment())
    , m_folder(folder)
{
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder + QStringLiteral("/config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), folder + QStringLiteral("/data"));
    environment.insert(QStringLiteral("TAMBER_LIBRARY"), library());
    environment.remove(QStringLiteral("TAMBER_PLUGIN"));
    environment.remove(QStringLiteral("QT_LOGGING_RULES"));
    // Without it Qt warns on standard error, which tests check is empty.
    const QString runtime = folder + QStringLiteral("/runtime");
    QDir().mkpath(runtime);
    QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
}

Tamber::Run Tamber::run(const QStringList& arguments, const QByteArray& input) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_folder);
    process.start(binDir() + QStringLiteral("/tamber"), arguments);
    process.write(input);
    process.closeWriteChannel();
    Run run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

namespace {

QStringList loggedLines;

#if QT_VERSION >= QT_VERSION_CHECK(5, 0, 0)
const auto installHandler = &qInstallMessageHandler;
void logLine(QtMsgType, const QMessageLogContext&, const QString& message)
{
    loggedLines << message;
}
#else
const auto installHandler = &qInstallMsgHandler;
void logLine(QtMsgType, const char* message)
{
    loggedLines << QString::fromLocal8Bit(message);
}
#endif

} // namespace

MessageLog::MessageLog()
    : previous(installHandler(logLine))
{
    loggedLines.clear();
}

MessageLog::~MessageLog()
{
    installHandler(previous);
}

QStringList MessageLog::lines() const
{
    return loggedLines;
}

nlohmann::json parseJson(const QByteArray& text)
{
    return nlohmann::json::parse(text.constData(), text.constData() + text.size(), nullptr, false);
}

nlohmann::json jsonAt(const nlohmann::json& value, const char* pointer)
{
    const nlohmann::json::json_pointer where(pointer);
    return value.contains(where) ? value.at(where) : nlohmann::json();
}

QString jsonText(const nlohmann::json& value)
{
    return value.is_string() ? QString::fromUtf8(value.get_ref<const std::string&>().c_str())
                             : QString();
}

QStringList jsonTexts(const nlohmann::json& array)
{
    QStringList result;
    if (array.is_array()) {
        for (const nlohmann::json& value : array)
            result << jsonText(value);
    }
    return result;
}

} // namespace TestSupport
