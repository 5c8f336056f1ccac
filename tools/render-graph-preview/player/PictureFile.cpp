#include "PictureFile.h"

#include "TestPictures.h"

#include <QBuffer>
#include <QColorSpace>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numeric>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {

constexpr int kLargestFirst = 10000; // number of a file
constexpr double kSourceFramesPerSecond = 60.0;

// libpng prints what it finds wrong to the standard error. The reader has an error for it.
class QuietErrors
{
public:
#ifdef Q_OS_UNIX
    QuietErrors() : m_saved(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0))
    {
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(null, STDERR_FILENO);
        ::close(null);
    }
    ~QuietErrors()
    {
        ::dup2(m_saved, STDERR_FILENO);
        ::close(m_saved);
    }
    Q_DISABLE_COPY_MOVE(QuietErrors)

private:
    int m_saved;
#endif
};

QString cannotWrite(const QString &path, const QString &reason)
{
    return u"cannot write '%1': %2"_s.arg(path, reason);
}

bool openForSaving(QSaveFile &file, QString &error)
{
    const QFileInfo existing(file.fileName());
    if (existing.exists() && !existing.isFile() && !existing.isDir())
        error = cannotWrite(file.fileName(), u"it is no regular file"_s);
    else if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) // tells when a disk is full
        error = cannotWrite(file.fileName(), file.errorString());
    return file.isOpen();
}

// A full disk takes a part of the content, and gives a reason for the rest only.
bool writeAll(QSaveFile &file, const QByteArray &content)
{
    for (qint64 done = 0; done < content.size();) {
        const qint64 written = file.write(content.constData() + done, content.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

} // namespace

QStringList sourceFiles(const QString &path)
{
    static const QRegularExpression kNumber(u"%(?:0(\\d))?d"_s);
    const auto match = kNumber.match(path);
    if (QFileInfo::exists(path) || !match.hasMatch())
        return {path};
    QStringList files;
    for (int number = 0; !files.isEmpty() || number < kLargestFirst; ++number) {
        const QString digits = u"%1"_s.arg(number, match.captured(1).toInt(), 10, QChar(u'0'));
        const QString file =
                QString(path).replace(match.capturedStart(), match.capturedLength(), digits);
        if (QFileInfo::exists(file))
            files.append(file);
        else if (!files.isEmpty())
            break;
    }
    return files.isEmpty() ? QStringList(path) : files;
}

bool SourcePicture::open(const QString &nameOrPath, SourcePicture &source, QString &error)
{
    SourcePicture opened;
    if (const QImage image = testPicture(nameOrPath); !image.isNull()) {
        opened.m_testPicture = testPicture(nameOrPath, 1) == image ? QString() : nameOrPath;
        opened.m_frames = {image};
    } else {
        [[maybe_unused]] const QuietErrors quiet;
        for (const QString &file : sourceFiles(nameOrPath)) {
            if (!opened.appendFile(file, error))
                return false;
        }
    }
    source = opened;
    return true;
}

bool SourcePicture::appendFile(const QString &path, QString &error)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (std::max(size.width(), size.height()) > kLargestSourceSide) {
        error = u"source picture '%1' is %2x%3, and the largest is %4x%4: make it smaller"_s.arg(
                path, QString::number(size.width()), QString::number(size.height()),
                QString::number(kLargestSourceSide));
        return false;
    }
    do {
        QImage image = reader.read();
        if (image.isNull()) {
            error = u"cannot read source picture '%1': %2; 'list' names the test pictures"_s.arg(
                    path, reader.errorString());
            return false;
        }
        if (image.colorSpace().isValid()) {
            // Programs that write sRGB give its gamma as 1 / 2.2.
            if (image.colorSpace().transferFunction() == QColorSpace::TransferFunction::Gamma
                && std::abs(image.colorSpace().gamma() - 2.2F) < 0.01F)
                image.setColorSpace(image.colorSpace().withTransferFunction(
                        QColorSpace::TransferFunction::SRgb));
            image.convertToColorSpace(QColorSpace::SRgb);
        }
        // Premultiplied colours are the colours over black.
        image.convertTo(QImage::Format_ARGB32_Premultiplied);
        if (image.isNull())
            throw std::bad_alloc();
        image.reinterpretAsFormat(QImage::Format_RGB32);
        const int delay = reader.supportsAnimation() ? reader.nextImageDelay() : 0;
        const qint64 frames = std::max(1L, std::lround(delay * 0.001 * kSourceFramesPerSecond));
        m_frames.append(QList<QImage>(frames, image)); // which share the pixels
    } while (reader.supportsAnimation() && reader.canRead());
    return true;
}

QImage SourcePicture::frame(int number) const
{
    return m_testPicture.isEmpty() ? m_frames.at(number % m_frames.size())
                                   : testPicture(m_testPicture, number);
}

bool SourcePicture::isAnimated() const
{
    return !m_testPicture.isEmpty() || m_frames.size() > 1;
}

void SourcePicture::freeze()
{
    m_testPicture.clear();
}

QString stretchText(QSize source, QSize picture)
{
    const QSize kept = source.scaled(picture, Qt::KeepAspectRatio) + QSize(1, 1); // if rounded up
    if (kept.width() >= picture.width() && kept.height() >= picture.height())
        return {};
    const auto shape = [](QSize size) {
        const int divisor = std::gcd(size.width(), size.height());
        return u"%1:%2"_s.arg(size.width() / divisor).arg(size.height() / divisor);
    };
    return u"stretched from %1 to %2"_s.arg(shape(source), shape(picture));
}

QImage newImage(QSize size, QImage::Format format)
{
    QImage image(size, format);
    if (image.isNull())
        throw std::bad_alloc();
    return image;
}

QImage floatPicture(const QImage &image)
{
    // Qt's own conversion multiplies by 1/255, which rounds differently.
    static const std::array<float, 256> kLevels = [] {
        std::array<float, 256> levels = {};
        for (std::size_t i = 0; i < levels.size(); ++i)
            levels.at(i) = float(i) / 255.0F;
        return levels;
    }();
    const auto level = [](int value) { return kLevels[std::size_t(value)]; };
    const QImage colors = image.convertToFormat(QImage::Format_RGB32);
    QImage picture = newImage(image.size(), QImage::Format_RGBA32FPx4);
    for (int y = 0; y < image.height(); ++y) {
        const auto *const from = reinterpret_cast<const QRgb *>(colors.constScanLine(y));
        auto *const row = reinterpret_cast<QRgbaFloat32 *>(picture.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = {level(qRed(from[x])), level(qGreen(from[x])), level(qBlue(from[x])), 1.0F};
    }
    return picture;
}

QImage displayImage(const QImage &picture, std::optional<float> headroom)
{
    const float white = headroom.value_or(1.0F);
    const auto level = [white](float value, float most) {
        return int(std::lround((value > 0.0F ? std::min(value / white, 1.0F) : 0.0F) * most));
    };
    QImage image =
            newImage(picture.size(), headroom ? QImage::Format_RGBX64 : QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        const auto *const row = reinterpret_cast<const QRgbaFloat32 *>(picture.constScanLine(y));
        auto *const narrow = reinterpret_cast<QRgb *>(image.scanLine(y));
        auto *const wide = reinterpret_cast<QRgba64 *>(narrow);
        for (int x = 0; x < picture.width(); ++x) {
            const auto &[red, green, blue, alpha] = row[x];
            if (headroom)
                wide[x] = qRgba64(quint16(level(red, 65535.0F)), quint16(level(green, 65535.0F)),
                                  quint16(level(blue, 65535.0F)), 65535);
            else
                narrow[x] = qRgb(level(red, 255.0F), level(green, 255.0F), level(blue, 255.0F));
        }
    }
    image.setColorSpace(headroom ? QColorSpace::SRgbLinear : QColorSpace::SRgb);
    if (headroom)
        image.setText(u"Headroom"_s, QString::number(double(white)));
    return image;
}

bool saveFile(const QByteArray &content, const QString &path, QString &error)
{
    QSaveFile file(path);
    if (openForSaving(file, error) && writeAll(file, content) && file.commit())
        return true;
    if (error.isEmpty())
        error = cannotWrite(path, file.errorString());
    return false;
}

bool canSaveFile(const QString &path, QString &error)
{
    QSaveFile file(path);
    return openForSaving(file, error);
}

bool savePng(const QImage &image, const QString &path, QString &error)
{
    QByteArray png;
    return pngOf(image, png, error) && saveFile(png, path, error);
}

bool pngOf(const QImage &image, QByteArray &png, QString &error)
{
    if (std::max(image.width(), image.height()) > kLargestPngSide) {
        error = u"a picture of %1x%2 is too large for a PNG file: its sides are at most %3"_s.arg(
                QString::number(image.width()), QString::number(image.height()),
                QString::number(kLargestPngSide));
        return false;
    }
    QBuffer buffer;
    if (!image.save(&buffer, "png")) {
        error = u"a picture of %1x%2 cannot be written as PNG"_s.arg(
                QString::number(image.width()), QString::number(image.height()));
        return false;
    }
    png = buffer.data();
    return true;
}
