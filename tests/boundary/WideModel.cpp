#include "WideModel.h"

std::string WideModelDescription() {
    return R"(<?xml version="1.0"?>
<Description>
 <BaseResourceNumber><BaseMedia>-1</BaseMedia><BasePrintMode/><BaseResolution>-1</BaseResolution>
  <BaseColor/><BaseColorMode>-1</BaseColorMode></BaseResourceNumber>
 <Definition>
  <MediaList DefaultMedia="2">
   <Item><ID>0</ID><InternalName>paper</InternalName><DisplayName>Paper</DisplayName></Item>
   <Item><ID>1</ID><InternalName>film</InternalName><DisplayName>Film</DisplayName></Item>
   <Item><ID>2</ID><InternalName>vinyl</InternalName><DisplayName>Vinyl</DisplayName></Item>
  </MediaList>
  <PrintModeList>
   <Item><ID>0</ID><InternalName>draft</InternalName><DisplayName>Draft</DisplayName></Item>
   <Item><ID>1</ID><InternalName>fine</InternalName><DisplayName>Fine</DisplayName></Item>
  </PrintModeList>
  <ResolutionList>
   <Item><ID>0</ID><XResValue>300</XResValue><YResValue>301</YResValue>
    <DisplayName>300 x 301</DisplayName></Item>
   <Item><ID>1</ID><XResValue>600</XResValue><YResValue>300</YResValue>
    <DisplayName>600 x 300</DisplayName></Item>
   <Item><ID>2</ID><XResValue>720</XResValue><YResValue>1440</YResValue></Item>
  </ResolutionList>
  <ColorList>
   <Item><ID>0</ID><InternalName>Cyan</InternalName><DisplayName>Process Cyan</DisplayName>
    <ChannelName>filename_C.raw</ChannelName></Item>
   <Item><ID>1</ID><InternalName>Black</InternalName><DisplayName>Process Black</DisplayName>
    <ChannelName>filename_K.raw</ChannelName></Item>
   <Item><ID>2</ID><InternalName>White</InternalName><DisplayName>Spot White</DisplayName>
    <ChannelName>filename_W.raw</ChannelName></Item>
   <Item><ID>3</ID><InternalName>Magenta</InternalName><DisplayName>Process Magenta</DisplayName>
    <ChannelName>filename_M.raw</ChannelName></Item>
  </ColorList>
  <ColorModeList>
   <Item><ID>0</ID><InternalName>kc</InternalName><DisplayName>KC</DisplayName><ColorantList>
    <Colorant ID="1" IsSpotColor="0"><ColorDepth>2</ColorDepth></Colorant>
    <Colorant><ColorDepth>2</ColorDepth></Colorant></ColorantList></Item>
   <Item><ID>1</ID><InternalName>kcw</InternalName><DisplayName>KC + White</DisplayName>
    <ColorantList>
     <Colorant ID="1" IsSpotColor="0"><ColorDepth>8</ColorDepth></Colorant>
     <Colorant ID="0" IsSpotColor=""><ColorDepth>4</ColorDepth></Colorant>
     <Colorant ID="2" IsSpotColor="1"><ColorDepth>1</ColorDepth></Colorant></ColorantList></Item>
   <Item><ID>2</ID><InternalName>k</InternalName><DisplayName>Gray</DisplayName><ColorantList>
    <Colorant ID="1" IsSpotColor="2"><ColorDepth>1</ColorDepth></Colorant></ColorantList></Item>
   <Item><ID>3</ID><InternalName>none</InternalName><DisplayName>gray</DisplayName></Item>
  </ColorModeList>
 </Definition>
 <Control_Definition>
  <Media ID="0" DefaultPrintMode="0">
   <PrintMode ID="1">
    <Resolution ID="1" DefaultColorMode="0"><ColorMode ID="0"/></Resolution>
    <Resolution ID="2" DefaultColorMode="2"><ColorMode ID="1"/><ColorMode ID="2"/></Resolution>
   </PrintMode>
   <PrintMode ID="0">
    <Resolution ID="0" DefaultColorMode="1"><ColorMode ID="0"/><ColorMode ID="1"/></Resolution>
    <Resolution ID="1" DefaultColorMode="9"><ColorMode ID="3"/></Resolution>
   </PrintMode>
  </Media>
  <Media ID="1" DefaultPrintMode="7">
   <PrintMode ID="1"><Resolution ID="2" DefaultColorMode="2"><ColorMode ID="2"/></Resolution>
   </PrintMode>
  </Media>
 </Control_Definition>
</Description>
)";
}
