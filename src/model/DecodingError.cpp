#include "model/DecodingError.h"

using namespace Qt::StringLiterals;

namespace orbitledge {

QString DecodingError::pathText() const
{
    QString text;
    for (const PathElement &element : codingPath) {
        if (const auto *index = std::get_if<qsizetype>(&element)) {
            text += u'[' + QString::number(*index) + u']';
        } else {
            if (!text.isEmpty())
                text += u'.';
            text += std::get<QString>(element);
        }
    }
    return text;
}

QString DecodingError::errorDescription() const
{
    switch (kind) {
    case Kind::KeyNotFound:
    case Kind::ValueNotFound:
        return u"The data couldn’t be read because it is missing."_s;
    case Kind::TypeMismatch:
    case Kind::DataCorrupted:
        break;
    }
    return u"The data couldn’t be read because it isn’t in the correct format."_s;
}

} // namespace orbitledge
