#include "GoodDescription.h"

#include <gtest/gtest.h>

#include "boundary/BaseFolder.h"

std::string Edited(std::string text, const std::vector<Edit>& edits) {
    for (const auto& [from, to] : edits) {
        EXPECT_NE(text.find(from), std::string::npos) << "not in the text: " << from;
        text = Replaced(std::move(text), from, to);
    }
    return text;
}

const char* const kGoodDescription = R"(<?xml version="1.0" encoding="utf-8"?><Printer>
  <BaseResourceNumber>
    <BaseMedia/><BasePrintMode>-1</BasePrintMode><BaseResolution>none</BaseResolution>
    <BaseColor></BaseColor><BaseColorMode></BaseColorMode></BaseResourceNumber>
  <Definition>
    <MediaList DefaultMedia="2">
      <Item><ID>0</ID><InternalName>paper</InternalName><DisplayName>Paper</DisplayName></Item>
      <Item><ID>1</ID><InternalName>film</InternalName><DisplayName>Film</DisplayName></Item>
      <Item><ID>2</ID><InternalName>vinyl</InternalName><DisplayName>Vinyl</DisplayName></Item>
    </MediaList>
    <PrintModeList>
      <Item><ID>0</ID><InternalName>draft</InternalName><DisplayName>Draft</DisplayName></Item>
      <Item><ID>1</ID><InternalName>normal</InternalName><DisplayName>Normal</DisplayName></Item>
      <Item><ID>2</ID><InternalName>best</InternalName><DisplayName>Best</DisplayName></Item>
    </PrintModeList>
    <ResolutionList>
      <Item><ID>0</ID><XResValue>360</XResValue><YResValue>720</YResValue>
        <DisplayName>360 x 720</DisplayName></Item>
      <Item><ID>1</ID><XResValue>1440</XResValue><YResValue>1440</YResValue>
        <DisplayName>1440 x 1440</DisplayName></Item>
    </ResolutionList>
    <ColorList>
      <C><ID>0</ID><InternalName>Cyan</InternalName><DisplayName>Blue-green</DisplayName>
        <ChannelName>filename_c</ChannelName></C>
      <C><ID>1</ID><InternalName>Magenta</InternalName><DisplayName>Pink</DisplayName>
        <ChannelName>filename_m</ChannelName></C>
      <C><ID>2</ID><InternalName>Yellow</InternalName><DisplayName>Sun</DisplayName>
        <ChannelName>filename_y</ChannelName></C>
      <C><ID>3</ID><InternalName>Black</InternalName><DisplayName>Night</DisplayName>
        <ChannelName>filename_k</ChannelName></C>
      <C><ID>4</ID><InternalName>White</InternalName><DisplayName>Snow</DisplayName>
        <ChannelName>filename_w.tif</ChannelName></C>
    </ColorList>
    <ColorModeList>
      <M><ID>0</ID><InternalName>cmyk</InternalName><DisplayName>Four Inks</DisplayName>
        <ColorantList>
          <K><ColorDepth>1</ColorDepth></K><K ID="1" IsSpotColor=""><ColorDepth>1</ColorDepth></K>
          <K ID="2" IsSpotColor="0"><ColorDepth>2</ColorDepth></K>
          <K ID="3" IsSpotColor="2"><ColorDepth>1</ColorDepth></K>
        </ColorantList></M>
      <M><ID>1</ID><InternalName>gray</InternalName><DisplayName>One Ink</DisplayName>
        <ColorantList><K ID="3" IsSpotColor="1"><ColorDepth>8</ColorDepth></K></ColorantList></M>
      <M><ID>2</ID><InternalName>none</InternalName><DisplayName>No Ink</DisplayName></M>
    </ColorModeList>
  </Definition>
  <Control_Definition>
    <Media ID="0" DefaultPrintMode="2">
      <Mode ID="1">
        <Res ID="0" DefaultColorMode="1"><Color ID="0"/><Color ID="1"/></Res>
        <Res ID="1" DefaultColorMode="3"><Color ID="2"/></Res>
      </Mode>
      <Mode ID="2"><Res ID="7" DefaultColorMode="0"><Color ID="1"/><Color/></Res></Mode>
    </Media>
    <Media ID="2" DefaultPrintMode="x"><Mode ID="0"/><Mode ID="3"/><Mode ID="two"/><Mode/></Media>
    <Media DefaultPrintMode="1"><Mode ID="9"/><Mode ID="1"/></Media>
  </Control_Definition>
  <ModelList>
    <Model Name="Other" CreateFolder="No"/>
    <Model Name="Roll" TypeRead="line_by_line" PrinterDirection="yes" CreateFolder="no"
        SupportWhite="2|Spot,Overprint;1,2;0,1">
      <JobTicketParam name="ticket.xml" code="utf-16"/>
      <HeaderParam name="roll.txt" output="filename.hdr" EndRip="yes"/>
      <PreviewParam type="PNG" sizeH="300" sizeV="200" bestFit="0" name="filename_small.png"/>
    </Model>
    <Model Name="Roll" CreateFolder="YES"/>
    <Model Name="Plain" SupportWhite="">
      <HeaderParam name="" output=""/><PreviewParam type="" sizeH="" name=""/>
    </Model>
  </ModelList>
</Printer>
)";
