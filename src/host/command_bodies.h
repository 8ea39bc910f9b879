#pragma once
// The bodies behind the command table. Each hands over to the subsystem that owns the job.
namespace tv::host {

void TV_BatchPlot_1();
void TV_BatchPlot_2();
void TV_BatchPlot_3();
void TV_BatchPlot_4();
void TV_BatchPlot_5();
void TV_BatchPlot_6();
void TV_BatchPlot_7();
void TV_BatchPlot_8();
void TV_BatchPlot_9();
void TV_BatchPlot_10();
void TV_BatchPlot_11();
void TV_BatchPlot_12();
void TV_BatchPlot_13();
void TV_BatchPlot_14();
void TV_BatchPlot_15();
void TV_BatchPlot_16();
void TV_BatchPlot_17();
void TV_BatchPlot_18();
void TV_BatchPlot_19();
void TV_BatchPlot_20();

void singledwg_plot();
void Plot_Temp1();
void Plot_Temp2();
void Plot_Temp3();
void SinglePlot_SelectP();
void SinglePlot_SelectW();
void SinglePlot_Plot_Standby();
void Plot_BaseFun1_Standby();
void Plot_BaseFun2_Standby();

}  // namespace tv::host
