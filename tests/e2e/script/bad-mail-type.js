// A failure of a method reaches a script as an exception with its code.
var client = new ActiveXObject("dtOIEx64.MapiClient");
try {
    client.Initialize(0, "", "CALENDARING");
    WScript.Echo("no failure");
} catch (failure) {
    WScript.Echo("failure " + (failure.number >>> 0).toString(16));
}
