#include "casetable/CsvWriter.h"

#include <string>

#include "casetable/CsvRecord.h"
#include "casetable/Output.h"
#include "casetable/Report.h"

namespace casetable {

void writeCsv(const Report& report, Output& output)
{
    const std::string lineEnd = "\r\n";
    output.write(csvRecord(uniqueHeader(report)) + lineEnd);
    for (std::size_t index = 0; index < report.rowCount; ++index)
        output.write(csvRecord(flatCells(report.row(index))) + lineEnd);
}

} // namespace casetable
