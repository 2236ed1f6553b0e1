// The records of the component library in memory: one entry per module (or per manufacturer,
// series or type that has no module yet), the terminal rows of a module, and the selection
// that the editor and the drawing dialog remember.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// One terminal row of a module.
class CPlcPartTermData {
public:
    CPlcPartTermData() = default;
    CPlcPartTermData(std::string sequence, std::string termValue, std::string termDesc,
                     std::string detailTermDesc)
        : sequence(std::move(sequence)),
          termValue(std::move(termValue)),
          termDesc(std::move(termDesc)),
          detailTermDesc(std::move(detailTermDesc)) {}
    virtual ~CPlcPartTermData() = default;

    std::string sequence;        // SEQUENCE as decimal text, 1-based
    std::string termValue;       // TermValue: the number printed on the module
    std::string termDesc;        // TERMDESC
    std::string detailTermDesc;  // DETAILTERMDESC
};

// One library entry. An entry whose series, type or code is empty stands for a tree node
// that has no children yet. The entry owns its terminal rows.
class CPlcPartData {
public:
    CPlcPartData() = default;
    CPlcPartData(std::string manufacturer, std::string series, std::string type)
        : manufacturer(std::move(manufacturer)), series(std::move(series)), type(std::move(type)) {}
    virtual ~CPlcPartData() = default;

    CPlcPartData(const CPlcPartData&) = delete;
    CPlcPartData& operator=(const CPlcPartData&) = delete;

    // A deep copy, terminal rows included.
    std::unique_ptr<CPlcPartData> Clone() const {
        auto copy = std::make_unique<CPlcPartData>(manufacturer, series, type);
        copy->code = code;
        copy->points = points;
        copy->moduleType = moduleType;
        copy->description = description;
        copy->rating = rating;
        copy->marker = marker;
        for (const auto& row : terminals) {
            copy->terminals.push_back(std::make_unique<CPlcPartTermData>(*row));
        }
        return copy;
    }

    std::string manufacturer;  // PLC_MANUFACTURER.MANUFACTURER
    std::string series;        // PLC_MANUFACTURER.SERIES
    std::string type;          // PLC_MANUFACTURER.TYPE
    std::string code;          // module table CODE
    std::string points;        // module table POINTS
    std::string moduleType;    // module table TYPE (the signal type)
    std::string description;   // module table DESCRIPTION
    std::string rating;        // module table RATING
    std::int32_t marker = 0;
    std::vector<std::unique_ptr<CPlcPartTermData>> terminals;  // in load order
};

// The current manufacturer, series, type and module code of a dialog.
class CPlcManufacturerInfo {
public:
    virtual ~CPlcManufacturerInfo() = default;

    std::string manufacturer;
    std::string series;
    std::string type;
    std::string code;
};
