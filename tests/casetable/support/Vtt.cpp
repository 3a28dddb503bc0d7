#include "tests/casetable/support/Vtt.h"

#include <cstdio>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>

#include <vtkAbstractArray.h>
#include <vtkCallbackCommand.h>
#include <vtkCommand.h>
#include <vtkDoubleArray.h>
#include <vtkSmartPointer.h>
#include <vtkStringArray.h>
#include <vtkTable.h>
#include <vtkType.h>
#include <vtkVariant.h>
#include <vtkXMLTableReader.h>

namespace casetable {
namespace tests {

namespace {

std::string digits(double value)
{
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof text, "%.17g", value));
    return text;
}

VttColumn readColumn(vtkAbstractArray& array)
{
    VttColumn column;
    column.name = array.GetName() == nullptr ? "(none)" : array.GetName();
    const vtkIdType size = array.GetNumberOfValues();
    if (auto* const texts = vtkStringArray::SafeDownCast(&array)) {
        column.type = "texts";
        for (vtkIdType i = 0; i < size; ++i)
            column.cells.push_back(texts->GetValue(i));
    } else if (auto* const doubles = vtkDoubleArray::SafeDownCast(&array)) {
        column.type = "doubles";
        for (vtkIdType i = 0; i < size; ++i)
            column.cells.push_back(digits(doubles->GetValue(i)));
    } else if (array.GetDataType() == VTK_LONG || array.GetDataType() == VTK_LONG_LONG) {
        column.type = "integers";
        for (vtkIdType i = 0; i < size; ++i)
            column.cells.push_back(array.GetVariantValue(i).ToString());
    } else {
        column.type = array.GetClassName();
    }
    return column;
}

} // namespace

bool operator==(const VttColumn& a, const VttColumn& b)
{
    return std::tie(a.name, a.type, a.cells) == std::tie(b.name, b.type, b.cells);
}

std::ostream& operator<<(std::ostream& stream, const VttColumn& column)
{
    return stream << column.type << " " << testing::PrintToString(column.name) << " "
                  << testing::PrintToString(column.cells);
}

std::vector<VttColumn> readVtt(const std::string& path)
{
    std::string complaint;
    const auto observer = vtkSmartPointer<vtkCallbackCommand>::New();
    observer->SetClientData(&complaint);
    observer->SetCallback([](vtkObject*, unsigned long, void* complaint, void* text) {
        *static_cast<std::string*>(complaint) += static_cast<const char*>(text);
    });
    const auto reader = vtkSmartPointer<vtkXMLTableReader>::New();
    reader->AddObserver(vtkCommand::ErrorEvent, observer);
    reader->SetFileName(path.c_str());
    reader->Update();
    if (!complaint.empty() || reader->GetErrorCode() != 0)
        throw std::runtime_error("not an XML table: " + complaint);

    std::vector<VttColumn> columns;
    vtkTable& table = *reader->GetOutput();
    for (vtkIdType j = 0; j < table.GetNumberOfColumns(); ++j)
        columns.push_back(readColumn(*table.GetColumn(j)));
    return columns;
}

} // namespace tests
} // namespace casetable
