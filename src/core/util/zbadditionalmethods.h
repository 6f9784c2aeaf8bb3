#pragma once

#include <QString>

// Small helpers shared across the program.
class ZBAdditionalMethods
{
public:
    // A fresh random UUID in the canonical 36-character form with upper-case
    // hexadecimal digits: XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX.
    static QString generateUUID();
};
