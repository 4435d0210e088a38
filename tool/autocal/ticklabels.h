#pragma once
// The second stage: the tick labels beside the frame.  The ink below the
// frame and left of it is cut into connected blobs, the blobs are grouped
// into labels, a raised exponent is told from its base, and each label is
// read by Tesseract (English data, digits, signs and unit letters only).

#include "tool/autocal/labelvalue.h"
#include "tool/autocal/picturegrid.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

enum class AxisSide { X, Y };

struct CTickLabel {
    // The label's box in the picture.
    QRect box;
    // Where the label stands along its axis: the centre of the box across X,
    // the middle of the base (without the raised exponent) along Y.
    double position = 0;
    QString text;
    QString exponent;
    // Tesseract's confidence, 0 to 100 (the lower of base and exponent).
    int confidence = 0;
    CLabelValue value;
    // The label's ink alone on white, at the picture's scale: the base, and
    // the raised exponent (null without one), each without its minus sign.
    QImage baseCrop;
    QImage exponentCrop;
    // A leading minus sign, told by its shape and left out of the crop.
    bool baseMinus = false;
    bool exponentMinus = false;
    // The number of characters of the base as runs of inked columns (a minus
    // and a decimal point not counted), and after how many of them a decimal
    // point stands (-1: none).
    int baseBlobs = 0;
    int pointAfter = -1;
    // A unit prefix that descends below the base line, p or µ, told by its
    // shape and left out of the crop (null for none).
    QChar prefixLetter;
    // With such a letter, the whole label's ink: small print read alone
    // loses its decimal point more often than with the letter after it.
    QImage wholeCrop;
};

// The blobs of the labels of one axis, grouped, without reading them yet.
QList<CTickLabel> FindTickLabels(const CDarkness &dark, const CGridLines &grid, AxisSide side);

// Reads every label in place.  False when the OCR engine cannot be started
// (its English data missing); the labels then stay unread.
bool ReadTickLabels(QList<CTickLabel> &labels);
