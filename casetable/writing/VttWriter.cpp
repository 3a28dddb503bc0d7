#include "casetable/writing/VttWriter.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vtkAbstractArray.h>
#include <vtkDoubleArray.h>
#include <vtkObject.h>
#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkType.h>
#include <vtkTypeInt64Array.h>
#include <vtkXMLTableWriter.h>

#include "casetable/importing/Report.h"
#include "casetable/system/ExitCode.h"
#include "casetable/system/Output.h"
#include "casetable/system/Printable.h"
#include "crawler/private/PathReading.h"

namespace casetable {

namespace {

using Texts = std::vector<std::string>;

// The texts of each column.
std::vector<Texts> columnTexts(const Report& report)
{
    std::vector<Texts> columns(report.columns.size());
    for (Texts& column : columns)
        column.reserve(report.rowCount);
    for (std::size_t index = 0; index < report.rowCount; ++index) {
        std::vector<std::string> cells = report.row(index).cells;
        for (std::size_t j = 0; j < cells.size(); ++j)
            columns[j].push_back(std::move(cells[j]));
    }
    return columns;
}

template <class Array> vtkSmartPointer<Array> makeArray(std::size_t size)
{
    auto array = vtkSmartPointer<Array>::New();
    array->SetNumberOfValues(static_cast<vtkIdType>(size));
    return array;
}

// NaN stands for no value, so that the column is one of numbers all the same.
vtkSmartPointer<vtkAbstractArray> makeNumbers(const Texts& texts)
{
    auto array = makeArray<vtkDoubleArray>(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        double value = 0;
        if (!reading::convertsToNumber(texts[i], value) || !std::isfinite(value))
            value = std::numeric_limits<double>::quiet_NaN();
        array->SetValue(static_cast<vtkIdType>(i), value);
    }
    return array;
}

vtkSmartPointer<vtkAbstractArray> makeCounts(const Texts& texts)
{
    auto array = makeArray<vtkTypeInt64Array>(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        array->SetValue(static_cast<vtkIdType>(i), std::stoll(texts[i]));
    return array;
}

vtkSmartPointer<vtkAbstractArray> makeStrings(const Texts& texts)
{
    auto array = makeArray<vtkStringArray>(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        array->SetValue(static_cast<vtkIdType>(i), texts[i]);
    return array;
}

vtkSmartPointer<vtkAbstractArray> makeColumn(const Column& column, const Texts& texts)
{
    if (!column.isNumber())
        return makeStrings(texts);
    return column.isValue() ? makeNumbers(texts) : makeCounts(texts);
}

// A name that survives as an attribute: VTK's writer puts it between quotes as it is, and VTK's
// reader takes the first ">" for the end of the element.
std::string attributeText(const std::string& name)
{
    std::string text;
    for (const char c : printable(name)) {
        switch (c) {
        case '"':
            text += "\\x22";
            break;
        case '&':
            text += "\\x26";
            break;
        case '<':
            text += "\\x3c";
            break;
        case '>':
            text += "\\x3e";
            break;
        default:
            text += c;
        }
    }
    return text;
}

Texts names(const Report& report)
{
    Texts names = uniqueHeader(report.columns);
    for (std::string& name : names)
        name = attributeText(name);
    return uniqueNames(std::move(names));
}

vtkSmartPointer<vtkTable> makeTable(const Report& report)
{
    const Texts header = names(report);
    std::vector<Texts> columns = columnTexts(report);
    auto table = vtkSmartPointer<vtkTable>::New();
    for (std::size_t j = 0; j < columns.size(); ++j) {
        const vtkSmartPointer<vtkAbstractArray> column = makeColumn(report.columns[j], columns[j]);
        Texts().swap(columns[j]);
        column->SetName(header[j].c_str());
        table->AddColumn(column);
    }
    return table;
}

// Keeps VTK from telling at length on standard error of a failure, of which the user hears in one
// line.
class WarningsOff {
public:
    WarningsOff() { vtkObject::GlobalWarningDisplayOff(); }
    ~WarningsOff() { vtkObject::SetGlobalWarningDisplay(before_); }
    WarningsOff(const WarningsOff&) = delete;
    WarningsOff& operator=(const WarningsOff&) = delete;

private:
    const int before_ = vtkObject::GetGlobalWarningDisplay();
};

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

} // namespace

void writeVtt(const Report& report, Output& output)
{
    const WarningsOff warningsOff;
    const auto writer = vtkSmartPointer<vtkXMLTableWriter>::New();
    writer->SetInputData(makeTable(report));
    writer->SetDataModeToBinary();
    writer->WriteToOutputStringOn();
    bool isWritten = false;
    try {
        isWritten = writer->Write() != 0 && writer->GetErrorCode() == 0;
    } catch (const std::runtime_error&) {
        // The system has no thread left for those that the writer starts.
    }
    const std::string text = writer->GetOutputString();
    // The writer may run out of memory and say nothing.
    if (!isWritten || !endsWith(text, "</VTKFile>\n"))
        throw Failure(ExitCode::OutputFailed, "--format vtt: not enough memory for the XML table");
    output.write(text);
}

} // namespace casetable
