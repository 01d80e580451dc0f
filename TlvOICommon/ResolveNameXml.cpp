#include "ResolveNameXml.h"

#include "DocumentWriter.h"

WString BuildResolveNameXml(bool success, WStringView name, WStringView smtp)
{
    CDocumentWriter writer;
    writer.Open<"ResolveName">();
    writer.Open<"Result">();
    writer.FlagElement<"IsSuccess">(success);
    writer.Close<"Result">();
    writer.Open<"Body">();
    writer.Open<"Contact">();
    writer.CdataElement<"Name">(name);
    if (success)
    {
        writer.CdataElement<"EmailAddress">(smtp);
    }
    writer.Close<"Contact">();
    writer.Close<"Body">();
    writer.Close<"ResolveName">();
    return writer.Take();
}
