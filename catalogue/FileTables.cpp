#include "catalogue/FileTables.h"

namespace korlan {

FileTables Tables;

} // namespace korlan
