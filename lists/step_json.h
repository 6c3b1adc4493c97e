#pragma once

#include <QCborValue>
#include <QJsonObject>
#include <QJsonValue>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

/// A member of a step's JSON object and the field that it holds. The tables stand in the order in which QJsonObject
/// keeps members, the alphabet's.
template <typename Point>
struct JsonMember {
    QLatin1String key;
    std::variant<double Point::*, std::string Point::*, std::uint32_t Point::*, bool Point::*> field;
    bool isRead = true; ///< false for what is found out anew after reading
};

template <typename Point>
using JsonMembers = std::vector<JsonMember<Point>>;

/// Makes the JSON objects of the steps of one list, one after the other. Texts are units and words, so few combinations
/// of them come up: each object is a copy of the one that has the same texts, and only its numbers are written.
template <typename Point>
class StepJsonWriter {
public:
    explicit StepJsonWriter(const JsonMembers<Point>& members) : m_members(members) {}

    QJsonObject write(const Point& point);

private:
    const JsonMembers<Point>& m_members;
    std::unordered_map<std::string, QJsonObject> m_models; ///< by the texts, each ended by NUL
    std::string m_texts;
};

/// Reads steps from their JSON objects, one after the other; texts that come again are not converted again.
template <typename Point>
class StepJsonReader {
public:
    explicit StepJsonReader(const JsonMembers<Point>& members);

    /// Missing members leave their fields alone. A member of another type reads as 0, as an empty text, and leaves a
    /// count as it is; so does a number that no count can be.
    void read(const QJsonObject& object, Point& point);

private:
    struct Member {
        QCborValue key;  ///< compared with the key in an object without a copy of either
        QCborValue text; ///< the last one read
        std::string bytes;
    };

    void store(const QCborValue& value, std::size_t index, Point& point);

    const JsonMembers<Point>& m_members;
    std::vector<Member> m_state;
};
