#ifndef MODEL_ADDRESSES_H
#define MODEL_ADDRESSES_H

#include <string>
#include <vector>

namespace model {

struct Area
{
    std::string name;
    bool words;
    bool readOnly;
    int shift;
    int highest;
    std::string format;
    std::string lowestText;
    std::string highestText;
};

const std::vector<Area>& areas();

/// Null for a name that is not exactly one of the six.
const Area* findArea(const std::string& name);

/// Position of the area, -1 for an unknown one.
int areaPosition(const std::string& name);

/// Decimal number in 32 bits, blanks around it allowed; false and 0 for anything else.
bool decimal(const std::string& text, int& number);

std::vector<std::string> splitAt(const std::string& text, char separator);

int checkAddress(const std::string& areaName, const std::string& text, int& addr, bool bitVariable,
                 int count, bool writes);

std::vector<std::string> describeArea(const std::string& areaName);

std::vector<std::string> areaNames(bool words);

int addressSeries(const std::string& areaName, int start, int count, int interval,
                  std::vector<std::string>& texts, std::vector<int>& addrs);

} // namespace model

#endif
