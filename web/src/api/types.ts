// Made by scripts/gen-api-types from src/plugin-modules/Gallery/plugin/ApiCatalogue.json and
// scripts/api-behaviour.json; change those files, not this one.

export type FileType = "video" | "image" | "other";

export type SubType = "Highlight" | "AnimatedGif" | "Normal" | "SuperResolution" | "SuperResolution_Oversized" | "360Mono" | "Stereo" | "360Stereo" | "Exr" | "Normal_Lumis" | "Montage" | "InstantReplay" | "Manual" | "Unknown";

export type AudioType = "Single" | "Separate" | "Unknown";

export type Quality = "low" | "medium" | "high";

export type Source = "OVS_Share" | "OVS_Lumis" | "OVS_SDK" | "StandAlone_Lumis" | "Undefined";

export type GalleryPathUpdateStatus = "TrackerUpdateNotActive" | "TrackerUpdateInProgress" | "TrackerUpdateComplete" | "CancelUpdateComplete" | "CancelUpdate";

export type HighlightAppInfo = {
  /** DRS-sourced short name of the application for the Highlight */
  appShortName?: string;
  /** DRS-sourced name of the application for the Highlight */
  name?: string;
  /** DRS-sourced profile name of the application for the Highlight */
  profileName?: string;
};

export type HighlightGroupInfo = {
  /** Application-sourced group identifier that the Highlight belongs to */
  groupId?: string;
  /** Application-sourced tag values for the Highlight. 32 bits, unsigned; a request may also send them signed. */
  tags?: number;
  /** Application-sourced significance values for the Highlight. 32 bits, unsigned; a request may also send them signed. */
  significance?: number;
};

export type Highlight = {
  /** Internal identifier value of the Highlight */
  id?: number;
  /** Application-sourced definition identifier of the Highlight */
  definitionId?: string;
  /** Application-sourced name of the Highlight */
  name?: string;
  /** Application-sourced group identifier that the Highlight belongs to */
  groupId?: string;
  /** Type of the highlight */
  type?: "screenshot" | "video";
  /** Fully-quantified path of the Highlight */
  path?: string;
  /** Application-sourced tag values for the Highlight. 32 bits, unsigned; a request may also send them signed. */
  tags?: number;
  /** Application-sourced significance values for the Highlight. 32 bits, unsigned; a request may also send them signed. */
  significance?: number;
  /** Length of the video, in seconds (defined only if Highlight type is video, videos less than 1 second report as 0) */
  videoLengthSeconds?: number;
  /** Reference of the request, which the identifier of the message replaces when it is missing */
  messageBusReferenceId?: string;
  /** Start of the video, in milliseconds */
  startDelta?: number;
  /** End of the video, in milliseconds */
  endDelta?: number;
  /** Timestamp of the Highlight */
  eventTimeStamp?: string;
  /** Application that the Highlight comes from */
  app?: HighlightAppInfo;
};

export type MontageInput = {
  details: {
    /** Path to input file */
    path: string;
    /** Duration, in milliseconds, of the video or audio file */
    duration: number;
    /** Horizontal size of video or image */
    width?: number;
    /** Vertical size of video or image */
    height?: number;
    /** Label of specific highlight type */
    highlightType?: string;
    /** Filter to apply */
    filter?: string;
    source?: {
      /** Moniker of the application that produced the input file */
      app?: string;
      /** Moniker of how that application captured the input file */
      method?: string;
    };
    transition?: {
      /** Type of transition */
      kind?: string;
      /** Speed of transition */
      speed?: 0.5 | 1.0 | 2.0;
    };
    /** cmsId of current game */
    cmsid?: string;
  };
  /** Type of Montage input: image, video or audio */
  inputFileType: "video" | "image" | "audio";
  /** Path to the EDGE log associated with the input video */
  edgeLog?: string;
};

export type Storyboard = {
  titleSequence?: {
    /** Type of title sequence */
    seqType?: "none" | "titleBasic";
    seqDetails?: {
      /** This is the text used in the title sequence */
      txtTitle?: string;
      /** This is the Subtitle used in the title sequence */
      txtSubtitle?: string;
    };
  };
  /** Celebration to use in the storyboard */
  celebration?: string;
  brandZV?: {
    /** Type of brand to use. Passed unchanged to the montage process. The catalogue's default, "brandSlideInOnly", is none of the words. */
    brandType?: "none" | "brandSliderInOnly" | "brandSlideInOut";
    brandDetails?: {
      /** Position of brand within story board */
      position?: "atStart" | "atEnd";
    };
  };
};

export type MemeInfo = {
  /** Text string to be displayed in the top bar */
  topBarText: string;
  /** Text string to be displayed in the bottom bar */
  bottomBarText: string;
};

export type UGC = {
  /** Internal identifier value of the UGC */
  id?: number;
  /** Fully-quantified path of the UGC */
  path?: string;
  fileType?: FileType;
  fileSubType?: SubType;
  fileSource?: Source;
  /** Size of file in kilobytes */
  fileSizeKB?: number;
  /** Creation date of the file */
  date?: string;
  /** DRS Name embedded in the file */
  DRSName?: string;
  /** DRS profile embedded in the file */
  DRSProfileName?: string;
  /** CMS ID of the app */
  cmsId?: number;
  /** Duration of video file in hh:mm:ss */
  duration?: string;
  /** Duration of video file in milliseconds */
  msDuration?: number;
  audioType?: AudioType;
  /** Application-sourced definition identifier of the Highlight */
  highlightDefinitionId?: string;
  /** Application-sourced name of the Highlight */
  highlightName?: string;
  /** Application-sourced group identifier that the Highlight belongs to */
  highlightGroupId?: string;
  /** Application-sourced tag values for the Highlight. 32 bits, unsigned. */
  highlightTags?: number;
  /** Application-sourced significance values for the Highlight. 32 bits, unsigned. */
  highlightSignificance?: number;
  /** Timestamp of Highlight Media File */
  eventTimeStamp?: string;
  memeInfo?: MemeInfo;
};

export type ActivityEvent = {
  /** time of the game event */
  time: string;
  /** name of the game event */
  name: string;
  /** additional information for the event */
  info: string;
  /** round number of the event */
  round?: number;
};

export type ActivityRound = {
  /** round number */
  number: number;
  /** team1 score */
  score1?: number;
  /** team2 score */
  score2?: number;
  /** start time of the round */
  time: string;
};

export type ActivityData = {
  /** name of the game */
  gameName?: string;
  /** session number of the game */
  session?: number;
  playStarted?: string;
  playTime?: string;
  /** game start time */
  startTime?: string;
  /** game end time */
  endTime?: string;
  /** name of filename for map */
  mapFileName?: string;
  /** array of edge events */
  events?: ActivityEvent[];
  /** array of round end scores */
  rounds?: ActivityRound[];
  /** metadata for map files */
  metaData?: string;
};

export type GallerySettings = {
  /** Fully-quantified path to root of Gallery */
  path?: string;
  /** User-selected Gallery path, not including the product subfolder */
  userGalleryPath?: string;
  /** Fully-quantified path to the capture temp folder */
  tempFolderPath?: string;
  capacity?: GalleryCapInfo;
  trackerStatus?: GalleryPathUpdateStatus;
};

export type GalleryCapInfo = {
  /** Defines if the disk space cap should be enforced or not */
  enabled?: boolean;
  /** Gallery disk usage */
  usageMB?: number;
  /** Allow disk space capacity when cap is enabled */
  capacityPercent?: number;
  /** Total disk space of the drive */
  totalDiskSpaceMB?: number;
};

export type MontageConfigInfo = {
  id?: string;
  name?: string;
}[];

export interface Requests {
  GetFolderListing: {
    parameters: {
      /** Name of folder */
      directory: string;
      /** Optional; limits the listing to screenshots that pass the ownership check */
      shouldGetOnlyZv?: boolean;
      excludeDirectoryType?: "none" | "hidden" | "empty" | "hiddenOrEmpty" | "hiddenAndEmpty";
      shouldShowEXR?: boolean;
    };
    response: {
      /** Array of files and their extended information */
      files?: {
        /** Name of file */
        name?: string;
        type?: FileType;
        subtype?: SubType;
        source?: Source;
        /** Fully-quantified path of thumbnail for current file */
        thumbnail?: string;
      }[];
      /** Array of subdirectories */
      directories?: string[];
    };
  };
  GetAppStats: {
    parameters: {
      /** Name of the application folder */
      appName: string;
    };
    response: {
      /** Number of screenshots in the directory */
      screenshots?: number;
      /** Number of videos in the directory */
      videos?: number;
    };
  };
  GetAppUGC: {
    parameters: {
      /** Name of the application folder */
      appName: string;
    };
    response: {
      /** Array of the UGC items of the folder. Also when it is empty. */
      ugc: UGC[];
    };
  };
  RemoveGalleryItem: {
    parameters: {
      /** Full path of a capture on record */
      file: string;
      /** Has no effect */
      forceDelete?: boolean;
    };
    response: Record<string, unknown>;
  };
  EnumerateDrives: {
    parameters: Record<string, unknown>;
    response: {
      /** Array of system drives */
      drives?: {
        /** Name of drive */
        name: string;
        /** Type of drive */
        type: string;
      }[];
    };
  };
  GetFileMetadata: {
    parameters: {
      /** Full File Path */
      file: string;
      /** Desired thumbnail width in px. Only together with `height`; without both there is no thumbnail. */
      width?: number;
      /** Desired thumbnail height in px. Only together with `width`. */
      height?: number;
    };
    response: {
      fileType?: FileType;
      /** Left out where the record says "Screenshot". */
      fileSubType?: SubType;
      fileSource?: Source;
      /** DRS Name embedded in the file */
      DRSName?: string;
      /** DRS profile embedded in the file */
      DRSProfileName?: string;
      /** CMS ID of the app */
      cmsId?: number;
      /** Creation date of the file */
      date?: string;
      /** Size of file in kilobytes */
      fileSizeKB?: number;
      /** The thumbnail as a `data:image/png;base64,` text */
      thumbnail?: string;
      /** Duration of video file */
      duration?: string;
      /** Duration of video file in milliseconds */
      msDuration?: number;
      /** Timestamp of Highlight Media File */
      eventTimeStamp?: string;
      audiotype?: AudioType;
      memeInfo?: MemeInfo;
    };
  };
  GetEventData: {
    parameters: Record<string, unknown>;
    response: {
      /** Array of activity feed data for different games. Left out when it would be empty. */
      recents?: ActivityData[];
    };
  };
  GetThumbnail: {
    parameters: {
      /** Full File Path */
      file: string;
      /** Desired thumbnail width in px */
      width: number;
      /** Desired thumbnail height in px */
      height: number;
    };
    response: {
      /** The thumbnail as a `data:image/png;base64,` text. Left out when the file has none. */
      thumbnail?: string;
    };
  };
  GetFolderCRC: {
    parameters: {
      /** Name of folder */
      directory: string;
    };
    response: {
      /** CRC checksum value for the folder */
      crc: number;
    };
  };
  GetImageFileDimensions: {
    parameters: {
      /** Full File Path */
      file: string;
    };
    response: {
      /** Pixel width of the image */
      width?: number;
      /** Pixel height of the image */
      height?: number;
    };
  };
  CopyFile: {
    parameters: {
      /** Full source file path */
      source: string;
      /** Full destination file path */
      destination: string;
    };
    response: Record<string, unknown>;
  };
  MoveFile: {
    parameters: {
      /** Full source file path */
      source: string;
      /** Full destination file path */
      destination: string;
    };
    response: Record<string, unknown>;
  };
  IsDirectoryWriteable: {
    parameters: {
      /** Full directory path */
      directory: string;
    };
    response: {
      /** The catalogue spells it `writeable`. */
      writable: boolean;
    };
  };
  GetSettings: {
    parameters: Record<string, unknown>;
    response: {
      settings: GallerySettings;
    };
  };
  SetSettings: {
    parameters: {
      settings: GallerySettings;
    };
    response: Record<string, unknown>;
  };
  GetDriveInfo: {
    parameters: {
      /** A path on the drive. A single character gets a `:` appended, so the root can only be asked for as `//`. */
      drive: string;
    };
    response: {
      /** Free space on the drive, in megabytes */
      freeSpaceMB: number;
      /** Total size of the drive, in megabytes */
      totalSpaceMB: number;
    };
  };
  CancelPathUpdate: {
    parameters: Record<string, unknown>;
    response: Record<string, unknown>;
  };
  GetRecentUGC: {
    parameters: {
      /** Number of ugcs to get */
      count: number;
    };
    response: {
      /** Array of Recent UGC. Left out when it would be empty. */
      recents?: UGC[];
    };
  };
  CheckDiskSpace: {
    parameters: Record<string, unknown>;
    response: {
      /** Indicates if disk space is low */
      lowDiskSpace?: boolean;
    };
  };
  EnqueuePendingHighlight: {
    parameters: {
      app?: HighlightAppInfo;
      highlight: Highlight;
    };
    response: {
      highlight: Highlight;
    };
  };
  OpenHighlightsGroupSummary: {
    parameters: {
      /** Application whose Highlights are shown */
      app: HighlightAppInfo;
      /** Groups to show in the summary */
      groups: HighlightGroupInfo[];
    };
    response: Record<string, unknown>;
  };
  GetHighlightsCount: {
    parameters: {
      app: HighlightAppInfo;
      group: HighlightGroupInfo;
    };
    response: {
      /** Highlights count */
      count: number;
    };
  };
  DeleteGroupHighlights: {
    parameters: {
      app: HighlightAppInfo;
      /** Application-sourced group identifier that the Highlight belongs to */
      groupId: string;
    };
    response: Record<string, unknown>;
  };
  WriteEncryptedBitmap: {
    parameters: {
      /** Meme image */
      bitmapImage: string;
    };
    response: Record<string, unknown>;
  };
  TranscodeMediaFile: {
    parameters: {
      /** Full File Path that is to be transcoded. When there is no such file, the request fails with "File path is empty or file does not exist". */
      file: string;
      /** Folder for the output file. It must exist, or the request fails with "targetPath is empty". */
      targetPath: string;
      /** User context */
      userData?: string;
      /** Max file size. Refused together with `newWidth` or `newHeight`, except with `memeImage`. */
      maxFileSizeMB?: number;
      /** encode quality. Any other word counts as the default. */
      quality?: "low" | "medium" | "high" | "ultra";
      /** Duration of the output file. Without it the request fails with "Missing mandatory field newDuration". */
      newDuration: number;
      /** Desired width of the output in px */
      newWidth?: number;
      /** Desired height of the output in px */
      newHeight?: number;
      /** Desired frame-rate class. Any other word counts as the default. */
      newFps?: "low" | "medium" | "high" | "ultra";
      /** Meme bitmap, base64 text */
      memeImage?: string;
    };
    response: {
      /** User data passed in API parameters */
      userData: string;
      /** Full File Path of the output file */
      newFile?: string;
      /** File size in bytes of the output file */
      newFileSizeB?: number;
      /** Width of the output file in px */
      newFileWidth?: number;
      /** Height of the output file in px */
      newFileHeight?: number;
      /** Number of encode passes made */
      numIterations?: number;
    };
  };
  CreateMontage: {
    parameters: {
      /** Fully-qualified path to the input montage script file */
      script: string;
    };
    response: Record<string, unknown>;
  };
  CreateMontageFromRecipe: {
    parameters: {
      /** Array of Montage inputs, which pair videos with their event logs */
      inputs: MontageInput[];
      storyboard?: Storyboard;
      /** Name of recipe script file (including extension).  This path will be applied relative to the main montage application data files. */
      recipe: string;
      /** Fully-qualified path to name of output montage video to create */
      output: string;
    };
    response: Record<string, unknown>;
  };
  CancelMontage: {
    parameters: Record<string, unknown>;
    response: Record<string, unknown>;
  };
  UpdateMontageProgress: {
    parameters: {
      /** Double from 0.0 to 100.0 indicating current progress */
      progress: number;
    };
    response: Record<string, unknown>;
  };
  Trim: {
    parameters: {
      /** File path of video to trim */
      input: string;
      /** File path of trimmed video */
      output: string;
      /** number of millisecs to trim from the front */
      headTrimMs: number;
      /** length of video in millisecs to from the headTrimMs */
      lengthMs: number;
    };
    response: Record<string, unknown>;
  };
  AddMeme: {
    parameters: {
      /** Full File Path */
      file: string;
      memeInfo: MemeInfo;
    };
    response: Record<string, unknown>;
  };
  EngraveMP4: {
    parameters: {
      /** Full File Path */
      file: string;
      /** CMS ID of the app */
      cmsId?: number;
      /** Profile name of the app */
      DRSProfileName: string;
      /** DRS App name of the app */
      DRSAppName: string;
      /** OPS short name of the app */
      DRSShortName: string;
      /** Indicates if it is a Highlight */
      isAHighlight?: boolean;
      /** Application-sourced definition identifier of the Highlight */
      highlightDefinitionId: string;
      /** Application-sourced group identifier that the Highlight belongs to */
      highlightGroupId: string;
      /** Application-sourced tag values for the Highlight */
      highlightTags?: number;
      /** Application-sourced significance values for the Highlight */
      highlightSignificance?: number;
      /** Application-sourced group identifier that the Highlight belongs to */
      mediaType: string;
    };
    response: Record<string, unknown>;
  };
  DeletePreview: {
    parameters: {
      /** Path of the preview Image */
      previewFilepath: string;
    };
    response: Record<string, unknown>;
  };
  PreviewPathInfo: {
    parameters: {
      paths: string[];
    };
    response: Record<string, unknown>;
  };
  GetMontageCloudConfig: {
    parameters: Record<string, unknown>;
    response: {
      /** The whole of the configuration file. The catalogue's `required` stands in the wrong place, so nothing of it is enforced. */
      montageConfig?: {
        celebrations?: MontageConfigInfo;
        transitions?: MontageConfigInfo;
        filters?: MontageConfigInfo;
      };
    };
  };
}

export interface Notifications {
  GalleryNotifications: {
    parameters: Record<string, unknown>;
    response: {
      /** State of a gallery path update */
      galleryPathUpdateStatus?: {
        status?: GalleryPathUpdateStatus;
      };
      /** Notification to open Highlights summary */
      openSummary?: {
        /** Array of Highlights to show in the summary */
        ugc?: UGC[];
      };
      /** Highlight Capture timed out */
      highlightCanceled?: {
        highlight?: Highlight;
      };
      /** The capture service failed to capture a Highlight */
      highlightCaptureFailed?: {
        /** Error code indicating highlight capture failure */
        errorCode?: number;
      };
      /** A UGC item was deleted */
      ugcDeleted?: {
        /** The item that was deleted */
        ugc?: UGC;
      };
      /** Capture Saved */
      captureSaved?: {
        ugc?: UGC;
        /** Indicates if user needs to be notified on Highlight Captures */
        unannounced?: boolean;
      };
      /** Indicates the gallery cap has been reached */
      galleryIsFull?: boolean;
      /** Indicates system is running low on disk space */
      checkDiskSpace?: {
        /** Indicates if disk space is low */
        lowDiskSpace?: boolean;
      };
    };
  };
  MontageNotification: {
    parameters: Record<string, unknown>;
    response: {
      /** Percentage of montage creation that is complete */
      progress?: number;
    };
  };
  PathChangeNotification: {
    parameters: Record<string, unknown>;
    response: {
      /** Fully-quantified path of Gallery */
      path?: string;
    };
  };
  TempFolderChangeNotification: {
    parameters: Record<string, unknown>;
    response: {
      /** Fully-quantified path of temp folder */
      path?: string;
    };
  };
  GalleryCapStateChangeNotification: {
    parameters: Record<string, unknown>;
    response: {
      capacity?: GalleryCapInfo;
    };
  };
  GalleryUpdatedNotification: {
    parameters: Record<string, unknown>;
    response: {
      capacity?: GalleryCapInfo;
    };
  };
}
