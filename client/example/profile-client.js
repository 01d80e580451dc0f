// Prints the profile of the user. Runs under the script host of the system:
//   cscript //nologo profile-client.js
// A script has no window: a program of the desktop client has to own the frame window meanwhile.
var calendar = 1; // TLVOIMAILTYPE_OFFICEOUTLOOK
var server = new ActiveXObject("dtOIEx64.MapiClient");

server.Initialize(calendar, "", "CALENDARING");

// Without a sink the end of the initialization shows in the profile, which is empty until then.
var profile = "";
for (var tries = 0; tries < 600 && !profile; tries++) {
    WScript.Sleep(100);
    profile = server.GetCurProfileInfo();
}
WScript.Echo(profile ? profile : "no profile within a minute");

server.ReleaseApp(false);
