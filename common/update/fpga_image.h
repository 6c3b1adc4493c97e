#pragma once

#include <QByteArray>
#include <QString>

/// Name of the design that this instrument's FPGAs run.
inline constexpr char FpgaDesign[] = "velda_top";

struct FpgaImageCheck {
    bool ok = false;
    QString line; ///< what there is to say of the image, good or bad; printable
};

/// Whether the bytes of a file are an image with a whole trailer, a matching CRC and this product's design. Any thread.
[[nodiscard]] FpgaImageCheck checkFpgaImage(const QByteArray& image);

/// checkFpgaImage that writes its line to the debug log.
[[nodiscard]] bool authenticateFpgaImage(const QByteArray& image);

/// The image without its last 34 bytes. Only for one that authenticateFpgaImage has accepted.
QByteArray removeSignature(const QByteArray& image);

/// Reads an image file and checks it. True: image holds it without its trailer. False: error is what the user is to
/// read, image is as it was. Blocks for as long as the medium takes: not for the GUI thread.
[[nodiscard]] bool loadFpgaImage(const QString& path, QByteArray& image, QString& error);
