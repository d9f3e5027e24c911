#include "MainWriter.h"

#include "Fields.h"

#include <QorCore/NumberText.h>
#include <QorCore/XMLWriter.h>

#include <sstream>

namespace Qor::Tivor::Measurements {

namespace {

class Writing {
public:
    Writing(const WrittenDocument& document, const PointTable& points) : m_document(document), m_points(points) {}

    std::string Write() {
        m_writer.StartDocument(m_stream);
        Start(std::string("p:") + rootName);
        m_writer.Attribute(m_stream, "xmlns:p", rootNamespace);
        m_writer.Attribute(m_stream, "xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance");
        m_writer.Attribute(m_stream, "xsi:schemaLocation",
                           std::string(rootNamespace) + ' ' + rootNamespace + "/ISO5436_2.xsd");
        WriteAxes();
        WriteFields("Record2");
        WritePoints();
        Start("Record4");
        Leaf("ChecksumFile", checksumName);
        End();
        WriteFields("VendorSpecificID");
        End();
        m_writer.EndDocument(m_stream);
        return m_stream.str();
    }

private:
    void Start(const std::string& name) { m_writer.StartTag(m_stream, name); }
    void End() { m_writer.EndTag(m_stream); }
    void Leaf(const std::string& name, const std::string& text) {
        Start(name);
        if (!text.empty())
            m_writer.Text(m_stream, text);
        End();
    }

    /// The fields whose path begins so, in the elements above them that are not open yet.
    void WriteFields(const std::string& beginning, std::size_t numOpen = 0) {
        ElementPath open;
        for (const Field& field : fields) {
            const auto text = m_document.texts.find(field.path);
            if (text == m_document.texts.end() || !text->first.starts_with(beginning))
                continue;
            ElementPath path = SplitPath(field.path);
            path.erase(path.begin(), path.begin() + static_cast<std::ptrdiff_t>(numOpen));
            std::size_t common = 0;
            while (common < open.size() && common + 1 < path.size() && open[common] == path[common])
                ++common;
            for (; open.size() > common; open.pop_back())
                End();
            for (; open.size() + 1 < path.size(); open.push_back(path[open.size()]))
                Start(path[open.size()]);
            Leaf(path.back(), text->second);
        }
        for (; !open.empty(); open.pop_back())
            End();
    }

    void WriteAxes() {
        Start("Record1");
        WriteFields("Record1/Revision", 1);
        Leaf("FeatureType", m_document.feature == Description::ePOINTS    ? "PCL"
                            : m_document.feature == Description::ePROFILE ? "PRF"
                                                                          : "SUR");
        Start("Axes");
        static constexpr std::array names{"CX", "CY", "CZ"};
        for (std::size_t i = 0; i < names.size(); ++i) {
            const StoredAxis& axis = m_document.axes[i];
            Start(names[i]);
            Leaf("AxisType", axis.isAbsolute ? "A" : "I");
            Leaf("DataType", std::string(1, static_cast<char>(axis.type)));
            Leaf("Increment", Core::GetNumberText(axis.increment));
            Leaf("Offset", Core::GetNumberText(axis.offset));
            End();
        }
        WriteFields("Record1/Axes/Rotation", 2);
        End();
        End();
    }

    void WritePoints() {
        Start("Record3");
        if (m_document.feature == Description::ePOINTS) {
            Leaf("ListDimension", std::to_string(m_document.size[0]));
        } else {
            Start("MatrixDimension");
            static constexpr std::array names{"SizeX", "SizeY", "SizeZ"};
            for (std::size_t i = 0; i < names.size(); ++i)
                Leaf(names[i], std::to_string(m_document.size[i]));
            End();
        }
        Start(m_document.isText ? "DataList" : "DataLink");
        if (m_document.isText) {
            m_points.ForEachDatum([this](const std::string& text) { Leaf("Datum", text); });
        } else {
            Leaf("PointDataLink", pointsName);
            Leaf("MD5ChecksumPointData", m_document.pointsChecksum);
            if (!m_document.validChecksum.empty()) {
                Leaf("ValidPointsLink", validName);
                Leaf("MD5ChecksumValidPoints", m_document.validChecksum);
            }
        }
        End();
        End();
    }

    const WrittenDocument& m_document;
    const PointTable& m_points;
    Core::XMLWriter m_writer;
    std::ostringstream m_stream;
};

template <class T>
void AppendBytes(std::string& bytes, const T& number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

} // namespace

std::string PointTable::ToBinary() const {
    std::string bytes;
    std::visit(
        [&]<class T>(const std::vector<T>& values) {
            bytes.reserve(values.size() * sizeof(T) + (x.size() + y.size()) * sizeof(double));
            if (x.empty() && y.empty()) {
                bytes.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
                return;
            }
            for (std::size_t i = 0; i < values.size(); ++i) {
                for (const std::vector<double>* const coordinates : {&x, &y})
                    if (!coordinates->empty())
                        AppendBytes(bytes, (*coordinates)[i]);
                AppendBytes(bytes, values[i]);
            }
        },
        z.values);
    return bytes;
}

std::string PointTable::ToValid() const {
    std::string bits;
    if (!z.HasMissing() || z.type == EStored::float32 || z.type == EStored::float64)
        return bits;
    bits.resize((z.missing.size() + 7) / 8);
    for (std::size_t i = 0; i < z.missing.size(); ++i)
        if (!z.missing[i])
            bits[i / 8] = static_cast<char>(bits[i / 8] | 1 << (i % 8));
    return bits;
}

void PointTable::ForEachDatum(const std::function<void(const std::string&)>& visit) const {
    std::visit(
        [&](const auto& values) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                std::string text;
                if (!z.HasMissing() || !z.missing[i]) {
                    for (const std::vector<double>* const coordinates : {&x, &y})
                        if (!coordinates->empty())
                            text += Core::GetNumberText((*coordinates)[i]) + ';';
                    text += Core::GetNumberText(values[i]);
                }
                visit(text);
            }
        },
        z.values);
}

std::string WriteMain(const WrittenDocument& document, const PointTable& points) {
    return Writing(document, points).Write();
}

} // namespace Qor::Tivor::Measurements
