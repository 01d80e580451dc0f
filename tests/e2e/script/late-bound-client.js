// A client of the server that knows nothing but the names of its methods.
var client = new ActiveXObject("dtOIEx64.MapiClient");
client.Initialize(1, "", "CALENDARING");
WScript.Echo("initialized");
client.ResolveName("nobody");
client.ReleaseApp(false);
WScript.Echo("released");
