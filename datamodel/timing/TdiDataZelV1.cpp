#include <datamodel/timing/TdiDataZelV1.h>

namespace datamodel {

const std::string TdiDataZelV1::EMPTY_NAME;

} // namespace datamodel
