#include "ObjectMap.h"

#include "dtOIEx64_i.h"
#include "MapiClient.h"
#include "Resource.h"

constinit const std::array<ObjectMapEntry, 1> g_objectMap = {{
    {&CLSID_MapiDtClient, IDR_MAPICLIENT, CMapiClient::Create, CMapiClient::ObjectMain},
}};
