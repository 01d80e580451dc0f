#include "ResolveNameXml.h"

#include "DocumentText.h"

WString BuildResolveNameXml(bool success, WStringView name, WStringView smtp)
{
    return BuildDocument([&](auto& document) {
        document.template Open<"ResolveName">();
        document.template Open<"Result">();
        document.template Flag<"IsSuccess">(success);
        document.template Close<"Result">();
        document.template Open<"Body">();
        document.template Open<"Contact">();
        document.template Cdata<"Name">(name);
        if (success)
        {
            document.template Cdata<"EmailAddress">(smtp);
        }
        document.template Close<"Contact">();
        document.template Close<"Body">();
        document.template Close<"ResolveName">();
    });
}
