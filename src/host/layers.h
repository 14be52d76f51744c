// The namespaces of the plug-in, which are its folders, the lowest first: each uses the names of those below it.
// The operations stand side by side and do not see one another.
#pragma once

namespace zvk::host::paths {}

namespace zvk::image {
using namespace host;
using namespace host::paths;
}  // namespace zvk::image

namespace zvk::pixels {
using namespace image;
}

namespace zvk::exchange {
using namespace pixels;
}

namespace zvk::pictures {
using namespace pixels;
}

namespace zvk::scaling {
using namespace pixels;
}

namespace zvk::geometry {
using namespace pixels;
}

namespace zvk::levels {
using namespace pixels;
}

namespace zvk::filters {
using namespace pixels;
}

namespace zvk::compositing {
using namespace pixels;
}

namespace zvk::plugin {
using namespace exchange;
using namespace pictures;
using namespace scaling;
using namespace geometry;
using namespace levels;
using namespace filters;
using namespace compositing;
}  // namespace zvk::plugin
