#include "measure/FloatDecoding.h"

#include <cmath>

FloatBytes WorkBytes(const QByteArray& data, qsizetype offset)
{
    return {quint8(data.at(offset)), quint8(data.at(offset + 1)), quint8(data.at(offset + 2)),
            quint8(data.at(offset + 3))};
}

void Trans_4Bytes_to_Float(const FloatBytes& bytes, double& result)
{
    const int b0 = bytes[0];
    const int b1 = bytes[1];
    int b2 = bytes[2];
    int b3 = bytes[3];

    const bool negative = b2 >= 128;
    if (negative)
        b2 -= 128;
    int exponent = b2 * 2;
    if (b3 >= 128) {
        exponent += 1;
        b3 -= 128;
    }
    const bool mantissaZero = b3 == 0 && b0 == 0 && b1 == 0;
    const double mantissa = b3 * std::ldexp(1.0, -7) + b0 * std::ldexp(1.0, -15) + b1 * std::ldexp(1.0, -23);

    double value = 0.0;
    if (exponent == 255)
        value = mantissaZero ? 1.0 : 0.0; // infinity shows as 1, not-a-number as 0
    else if (exponent > 0)
        value = std::ldexp(1.0 + mantissa, exponent - 127);
    else
        value = std::ldexp(mantissa, -126); // zero or subnormal
    if (negative)
        value *= -1;
    result = value;
}

double FloatAt(const QByteArray& data, qsizetype offset)
{
    double value = 0.0;
    Trans_4Bytes_to_Float(WorkBytes(data, offset), value);
    return value;
}
