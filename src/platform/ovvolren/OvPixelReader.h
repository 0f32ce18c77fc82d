#pragma once

#include "OvImageInfo.h"

#include <memory>

/// Reads the pixels of the images of one file, in all transfer syntaxes that DCMTK decodes and in JPEG 2000.
/// For one thread at a time; several readers may work side by side, also on one file.
class OvPixelReader
{
public:
    /// Opens the file \a inPath. Pixels stay in the file until they are read.
    explicit OvPixelReader(const QString& inPath);
    ~OvPixelReader();

    /// Reads \a inImage, which is one of the file's. The result is empty when all went well, else it says for
    /// people why the image can't be shown, as a part of a sentence ("it ends in the midst of its pixels").
    ///
    /// No more is allocated than the image takes in memory and in its file.
    QString read(const OvImageInfo& inImage, OvPixels& outPixels);

private:
    struct Record;
    const std::unique_ptr<Record> d;
};
